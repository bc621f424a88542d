#pragma once

#include <QString>

namespace vesk {

/// The lock that keeps a second interactive copy from starting. It is held until the process ends
/// and by no child of it.
class InstanceLock {
public:
    /// Makes the folder ".corvala" in `home` (mode 0700) and opens the lock file in it (0600). A
    /// folder that cannot be made ends the process abnormally; nothing is printed.
    explicit InstanceLock(const QString& home);
    InstanceLock(const InstanceLock&) = delete;
    InstanceLock& operator=(const InstanceLock&) = delete;
    ~InstanceLock() = default; // never closed: the lock lives exactly as long as the process

    /// Takes the lock without waiting. False when another copy holds it, or when the file could
    /// not be opened.
    [[nodiscard]] bool take() const;

private:
    int descriptor_;
};

} // namespace vesk
