#pragma once

#include <QString>

#include <functional>

namespace vesk {

/// Where an operation is disturbed.
struct Cut {
    int call = 0;  ///< number of the system call, from 1; 0 for none
    int error = 0; ///< what this call fails with; 0 when the process is killed before it
};

/// What became of an operation.
struct CutResult {
    bool killed = false;
    int calls = 0;     ///< system calls up to its end
    int disturbed = 0; ///< the kernel's number of the call that was made to fail
    QString complaint; ///< what it returned
};

/// Does `operation`, which returns its complaint or nothing, in a process of its own, and disturbs
/// it. Counted are the calls that the kernel gets, whoever makes them; those about memory, threads,
/// signals and the time are not. One that takes 10 seconds ends the program.
[[nodiscard]] CutResult cutCalls(Cut cut, const std::function<QString()>& operation);

} // namespace vesk
