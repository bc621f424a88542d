#pragma once

#include <objc/message.h>
#include <objc/runtime.h>

namespace vesk {

/// Sends a message without arguments.
template<typename Result>
Result send(id receiver, const char* selector) {
    return reinterpret_cast<Result (*)(id, SEL)>(objc_msgSend)(
        receiver, sel_registerName(selector));
}

/// Sends a message without arguments to the class itself.
inline id sendToClass(const char* name, const char* selector) {
    return send<id>(reinterpret_cast<id>(objc_getClass(name)), selector);
}

} // namespace vesk
