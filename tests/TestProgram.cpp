#include "tests/TestProgram.h"

#include <cstdio>
#include <cstring>

namespace vesk {

namespace {

const TestEntry* first = nullptr;

const char* withoutNamespaces(const char* name) {
    const char* const last = std::strrchr(name, ':');
    return last == nullptr ? name : last + 1;
}

} // namespace

TestEntry::TestEntry(const char* name, Run run)
    : name_(withoutNamespaces(name)), run_(run), next_(first) {
    first = this;
}

int runTest(int argc, char* argv[]) {
    if (argc < 2) {
        for (const TestEntry* entry = first; entry != nullptr; entry = entry->next_) {
            std::puts(entry->name_);
        }
        return 0;
    }
    for (const TestEntry* entry = first; entry != nullptr; entry = entry->next_) {
        if (std::strcmp(entry->name_, argv[1]) == 0) {
            argv[1] = argv[0];
            return entry->run_(argc - 1, argv + 1);
        }
    }
    std::fprintf(stderr, "There is no test %s.\n", argv[1]);
    return 2;
}

} // namespace vesk

int main(int argc, char* argv[]) {
    return vesk::runTest(argc, argv);
}
