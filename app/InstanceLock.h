#pragma once

#include "agent/ServiceError.h"

#include <QString>

namespace vesk {

/// The lock that keeps a second interactive copy from starting. It is held until the process ends
/// and by no child of it.
class InstanceLock {
public:
    /// Makes the folder ".corvala" in `home` (mode 0700) and opens the lock file in it (0600).
    explicit InstanceLock(const QString& home);
    InstanceLock(const InstanceLock&) = delete;
    InstanceLock& operator=(const InstanceLock&) = delete;
    ~InstanceLock() = default; // never closed: the lock lives exactly as long as the process

    /// The folder exists. Without it the program must not go on.
    [[nodiscard]] bool hasFolder() const noexcept { return hasFolder_; }

    /// Takes the lock without waiting. False when another copy holds it, or when the file could
    /// not be opened.
    [[nodiscard]] bool take();

    /// Why there is no folder, or why take() returned false.
    [[nodiscard]] const ServiceError& failure() const noexcept { return failure_; }

private:
    QString file_;
    int descriptor_ = -1;
    bool hasFolder_ = false;
    ServiceError failure_;
};

} // namespace vesk
