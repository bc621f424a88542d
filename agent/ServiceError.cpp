#include "agent/ServiceError.h"

#include <system_error>

namespace vesk {

using namespace Qt::StringLiterals;

ServiceError serviceError(int code, const QString& description) {
    return {ServiceError::serviceDomain.toString(), code, description};
}

ServiceError systemError(int number, const QString& what) {
    const auto words = QString::fromStdString(std::generic_category().message(number));
    return {ServiceError::systemDomain.toString(), number, what + u": "_s + words};
}

} // namespace vesk
