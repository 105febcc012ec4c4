#pragma once

#include "base/app_folder.h"

#include <stdexcept>

struct SettingsError : std::runtime_error {
    using std::runtime_error::runtime_error;
    QString text() const { return QString::fromUtf8(what()); }
};

// "TarvoQRB.INI": one setting a line, the value before the key ("24=NOFPC").
namespace SettingsFile {
inline constexpr auto FileName = "TarvoQRB.INI";
inline constexpr int DefaultTerminals = 24;
inline constexpr int MostTerminals = 254;

// The number of terminals. A missing file is created with its three lines first; a
// file with no "=NOFPC" line gives 24. A number the console cannot serve (over 254, or
// negative) is a SettingsError.
int loadNofpc(const AppFolder& folder);
} // namespace SettingsFile
