#pragma once

namespace vesk {

/// Gives our own widgets their roles and values for assistive technology; call before the first of
/// them is made. Further calls do nothing.
void installAccessibility();

} // namespace vesk
