// The fountain windows' cases (fountain_cases.cpp), run after DialogCases():
// the fountain control, its dialog's marker editor and the fountain
// library, in a test window of the host's own.
#pragma once

#include <span>

#include "host/win32/testhost/cases.h"

namespace tess::testhost {

std::span<const TestCase> FountainCases();

}  // namespace tess::testhost
