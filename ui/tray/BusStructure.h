#pragma once

#include <QDBusArgument>

#include <tuple>

namespace vesk {

/// A struct that goes over the bus as a structure: `members` lists its members in their order.
template<typename Type>
concept BusStructure = requires {
    Type::members;
};

template<BusStructure Structure>
QDBusArgument& operator<<(QDBusArgument& argument, const Structure& structure) {
    argument.beginStructure();
    std::apply(
        [&](auto... member) { (void(argument << structure.*member), ...); }, Structure::members);
    argument.endStructure();
    return argument;
}

template<BusStructure Structure>
const QDBusArgument& operator>>(const QDBusArgument& argument, Structure& structure) {
    argument.beginStructure();
    std::apply(
        [&](auto... member) { (void(argument >> structure.*member), ...); }, Structure::members);
    argument.endStructure();
    return argument;
}

} // namespace vesk
