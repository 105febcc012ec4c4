#pragma once

#include <QDate>
#include <QString>

class Database;
class Prompts;

// The dated copies of the database the operator makes from the main menu: under the home
// drive, "TarvoQRBDB", then one folder a day ("11_15_2026"), each holding one copy named as
// the database is. A second copy on the same day replaces the first.
namespace Backup {

// $HOMEDRIVE where it is set (Windows: "C:"), else the user's home folder.
QString homeDrive();
// homeDrive + "/TarvoQRBDB/" + the day as "MM_DD_YYYY".
QString datedFolder(const QString& homeDrive, const QDate& day);

struct Outcome {
    bool ok = false;
    QString folder; // the dated folder
    QString error;  // why not, for the operator
};

// Copies the database into the dated folder of `day`. The copy is taken by SQLite from a
// read transaction, so it is whole even when another program writes meanwhile; it is
// written beside the old copy, checked (it opens and passes quick_check) and only then
// put in the old one's place. On any failure the earlier copy of the day stays as it was.
Outcome makeCopy(const Database& database, const QString& homeDrive, const QDate& day);

} // namespace Backup

// The main menu's command: a copy for today under Backup::homeDrive(), then "Database file
// is successfully written to " and the folder under `title`; a failure says why instead.
void backupDatabase(const Database& database, const QDate& today, Prompts& prompts,
                    const QString& title);
