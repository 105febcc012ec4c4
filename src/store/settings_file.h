#pragma once

#include "base/app_folder.h"

#include <QList>
#include <QString>

#include <optional>
#include <stdexcept>
#include <utility>

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

// The value of a text setting: what stands before "=" + key on the last line that ends
// with it (the value cannot be empty). None when no line holds the key or there is no
// file. A file that cannot be read is a SettingsError.
std::optional<QString> readValue(const AppFolder& folder, const QString& key);

// Sets text settings, each on the line readValue reads it from, else on a new line at the
// end; an empty value removes every line that holds the key. Every other byte of the file
// stays as it was. A missing file is made with its three lines first. The new file
// replaces the old one only once it is complete, so a crash or a full disk leaves the old
// file whole. A value that holds a line break is a SettingsError, as is a file that cannot
// be read or written; nothing is changed then.
void writeValues(const AppFolder& folder, const QList<std::pair<QString, QString>>& settings);
} // namespace SettingsFile
