#include "app/HostName.h"

#include "app/ObjectiveC_mac.h"

namespace vesk {

QString hostName() {
    // The computer's own name, blanks and accents included, and not what the network made of it.
    const id name = send<id>(sendToClass("NSHost", "currentHost"), "localizedName");
    return name == nullptr ? QString() : QString::fromUtf8(send<const char*>(name, "UTF8String"));
}

} // namespace vesk
