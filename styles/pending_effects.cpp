// TEMPORARY stand-in for the effect written on another branch, so that this
// branch links and its table tests run. Delete this file when
// styles/bubbles.cpp lands.
#include "styles/effects.h"

namespace tess {

StyleEntry BubblesStyle() { return {"Bubbles", 0, {}, nullptr, nullptr}; }

}  // namespace tess
