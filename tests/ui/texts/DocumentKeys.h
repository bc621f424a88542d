#pragma once

#include <QList>

namespace vesk {

/// What a value of the health document is read as. A cool-down and a count are numbers that must
/// stay within bounds; a state is one of the words.
enum class KeyType {
    bay,
    count,
    integer,
    cooldown,
    number,
    boolean,
    string,
    state,
    word,
    dictionary,
    list,
    flags
};

/// One key of a dictionary; `inner` are those of the dictionary, or dictionaries, that it holds.
struct Key {
    const char* name;
    KeyType type;
    QList<Key> inner = {};
};

/// Those of the health document.
[[nodiscard]] const QList<Key>& documentKeys();

} // namespace vesk
