#include "app/MenuBar.h"

namespace vesk {

void installMenuBar(const MenuBarEntries& /*entries*/) {}

} // namespace vesk
