#pragma once

namespace vesk {

/// How the service stands, as far as the texts of a bay depend on it.
struct ServiceState {
    bool online = false;    ///< it answers
    bool accepting = false; ///< it takes deep jobs
};

} // namespace vesk
