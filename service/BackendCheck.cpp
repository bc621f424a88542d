#include "service/BackendCheck.h"

#include "service/ServiceClient.h"

#include <utility>

namespace vesk {

BackendCheck::BackendCheck(ServiceClient& client, Clock clock)
    : client_(client), clock_(std::move(clock)), connection_(std::in_place) {}

void BackendCheck::checkIfDue(Attention attention) {
    if (RefreshPolicy::diagnosticsDue(attention, clock_(), backendChecked_)) {
        checkBackend();
    }
}

void BackendCheck::reset() {
    backendReady_.reset();
    backendChecked_.reset();
    connection_.emplace();
}

void BackendCheck::checkBackend() {
    // Before sending, so that a slow or failed check is not repeated at every health fetch.
    backendChecked_ = clock_();
    client_.fetchBackendReady(&*connection_, [this](bool ready) {
        backendReady_ = ready;
        emit answered();
    });
}

} // namespace vesk
