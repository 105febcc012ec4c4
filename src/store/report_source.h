#pragma once

#include "base/app_folder.h"

#include <QString>

// The ODBC data source through which report tools read the console's database.
namespace ReportSource {
inline constexpr auto DataSourceName = "MS Access Database";

// The connection text the reports use.
QString setReportConnection(const AppFolder& folder);

// Writes the per-user data source definition where the platform keeps it: the
// registry on Windows, the user's ODBC ini file (iniPath) elsewhere. Existing values
// are overwritten; other data sources in the file are kept. Returns false, with the
// reason in *error, when the file cannot be written.
bool registerReportDataSource(const AppFolder& folder, const QString& iniPath,
                              QString* error = nullptr);

// $ODBCINI when set, else ~/.odbc.ini.
QString defaultIniPath();
} // namespace ReportSource
