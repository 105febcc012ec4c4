#pragma once

#include "base/app_folder.h"

#include <QString>

// "Products.LST": one product a line, in the form the terminal shows ("None @ 0.00").
namespace ProductList {
inline constexpr auto FileName = "Products.LST";
// The list as the "RAVP " message carries it: every line followed by ";", then "End";
// "None @ 0.00;End" when the file is missing.
QString listText(const AppFolder& folder);
} // namespace ProductList
