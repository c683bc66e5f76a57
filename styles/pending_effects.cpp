// TEMPORARY stand-ins for the two effects written on other branches, so that
// this branch links and its table tests run. Delete this file when
// styles/bubbles.cpp and styles/phasers.cpp land.
#include "styles/effects.h"

namespace tess {

StyleEntry BubblesStyle() { return {"Bubbles", 0, {}, nullptr, nullptr}; }

StyleEntry PhasersOnStunStyle() { return {"Phasers on Stun", 10, {}, nullptr, nullptr}; }

}  // namespace tess
