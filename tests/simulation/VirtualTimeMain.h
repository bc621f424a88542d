#pragma once

#include "tests/simulation/VirtualTime.h"

#include <QTest>

/// The main function of a test in virtual time.
#define VESK_VIRTUAL_TIME_MAIN(Application, Test)                                                  \
    int main(int argc, char* argv[]) {                                                             \
        QCoreApplication::setEventDispatcher(new vesk::VirtualTime);                               \
        const Application application(argc, argv);                                                 \
        Test test;                                                                                 \
        return QTest::qExec(&test, argc, argv);                                                    \
    }
