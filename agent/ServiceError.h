#pragma once

#include <QString>

namespace vesk {

/// A failure as a value: whose it is, its number there, and the text for the user.
struct ServiceError {
    /// Failures of the service and of its manager. The code is the tool's exit status, or 10 for a
    /// launch configuration that is not this service's.
    static constexpr QStringView serviceDomain = u"VeskWorker";

    /// Failures of the operating system. The code is its error number.
    static constexpr QStringView systemDomain = u"System";

    /// A file that is no property list. The code is 1.
    static constexpr QStringView propertyListDomain = u"PropertyList";

    QString domain;
    int code = 0;
    QString description;

    bool operator==(const ServiceError&) const = default;
};

/// A failure in the service's own domain.
[[nodiscard]] ServiceError serviceError(int code, const QString& description);

/// The operating system's error `number` with what could not be done, for example
/// `The file "a" could not be read`, in front of the system's own words.
[[nodiscard]] ServiceError systemError(int number, const QString& what);

} // namespace vesk
