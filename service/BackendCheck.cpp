#include "service/BackendCheck.h"

#include "service/ServiceClient.h"

#include <utility>

namespace vesk {

BackendCheck::BackendCheck(ServiceClient& client, Clock clock, QObject* parent)
    : QObject(parent),
      client_(client),
      clock_(std::move(clock)),
      inFlight_(std::make_unique<QObject>()) {}

void BackendCheck::checkIfDue(Attention attention) {
    if (RefreshPolicy::diagnosticsDue(attention, clock_(), backendChecked_)) {
        checkBackend();
    }
}

void BackendCheck::reset() {
    backendReady_.reset();
    backendChecked_.reset();
    inFlight_ = std::make_unique<QObject>();
}

void BackendCheck::checkBackend() {
    // Before sending, so that a slow or failed check is not repeated at every health fetch.
    backendChecked_ = clock_();
    client_.fetchBackendReady(inFlight_.get(), [this](bool ready) {
        backendReady_ = ready;
        emit answered();
    });
}

} // namespace vesk
