#pragma once

#include <QTest>

namespace vesk {

/// The test classes of one program, each of which runs alone, in a process of its own:
/// `program Class [ARGUMENT...]`.
class TestEntry {
public:
    /// Has the arguments of the class, the first being the program.
    using Run = int (*)(int argc, char* argv[]);

    /// Called while the program starts; `name` is the class with its namespaces.
    TestEntry(const char* name, Run run);

private:
    friend int runTest(int argc, char* argv[]);

    const char* name_;
    Run run_;
    const TestEntry* next_;
};

/// Runs the class that `argv` names; without a name lists all of them. 2 where there is none such.
int runTest(int argc, char* argv[]);

/// The run of `Test` under an application of its own.
template<class Application, class Test>
int runUnder(int argc, char* argv[]) {
    const Application application(argc, argv);
    Application::setAttribute(Qt::AA_Use96Dpi);
    Test test;
    return QTest::qExec(&test, argc, argv);
}

} // namespace vesk

/// A test class whose `run` is a function.
#define VESK_TEST_RUN(Test, run) static const vesk::TestEntry testEntry(#Test, run);

/// A test class that needs an event loop.
#define VESK_TEST(Test) VESK_TEST_RUN(Test, (vesk::runUnder<QCoreApplication, Test>))

/// A test class that needs widgets.
#define VESK_WIDGET_TEST(Test) VESK_TEST_RUN(Test, (vesk::runUnder<QApplication, Test>))
