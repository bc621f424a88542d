#include "agent/LoginObstacle.h"

namespace vesk {

std::optional<ServiceError> loginObstacle() {
    return std::nullopt;
}

} // namespace vesk
