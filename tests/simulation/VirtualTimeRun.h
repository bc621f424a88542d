#pragma once

#include "tests/TestProgram.h"
#include "tests/simulation/VirtualTime.h"

namespace vesk {

/// The run of `Test` in virtual time.
template<class Application, class Test>
int runInVirtualTime(int argc, char* argv[]) {
    QCoreApplication::setEventDispatcher(new VirtualTime);
    return runUnder<Application, Test>(argc, argv);
}

} // namespace vesk

/// A test class in virtual time.
#define VESK_VIRTUAL_TIME_TEST(Application, Test)                                                  \
    VESK_TEST_RUN(Test, (vesk::runInVirtualTime<Application, Test>))
