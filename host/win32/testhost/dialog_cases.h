// The main dialog's own cases (dialog_cases.cpp), run after Cases().
#pragma once

#include <span>

#include "host/win32/testhost/cases.h"

namespace tess::testhost {

std::span<const TestCase> DialogCases();

}  // namespace tess::testhost
