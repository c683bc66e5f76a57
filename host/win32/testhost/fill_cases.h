// The fills' cases (fill_cases.cpp): fill buttons, their gradient editor
// and pattern files, and direction pickers; run after DialogCases().
#pragma once

#include <span>

#include "host/win32/testhost/cases.h"

namespace tess::testhost {

std::span<const TestCase> FillCases();

}  // namespace tess::testhost
