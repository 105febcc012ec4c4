#include "store/backup.h"

#include "base/format.h"
#include "base/prompts.h"
#include "store/database.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <filesystem>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <unistd.h>
#endif

namespace {

// The copy's own check, on a connection of its own that is gone when it returns: the
// file opens as a database and SQLite finds nothing wrong in its pages. Empty when good.
QString problemOf(const QString& path) {
    static quint64 serial = 0;
    const QString name = QStringLiteral("tarvo-backup-%1").arg(++serial);
    QString problem;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(path);
        db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
        if (!db.open()) {
            problem = db.lastError().text();
        } else {
            QSqlQuery q(db);
            if (!q.exec(QStringLiteral("PRAGMA quick_check")))
                problem = q.lastError().text();
            else if (!q.next())
                problem = QStringLiteral("no answer to the check");
            else if (q.value(0).toString() != QLatin1String("ok"))
                problem = q.value(0).toString();
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
    return problem;
}

// On the disk before it takes the old copy's place, so that a power cut cannot leave a
// name pointing at pages never written.
bool flushToDisk(const QString& path) {
#ifdef Q_OS_UNIX
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY);
    if (fd < 0)
        return false;
    const bool ok = ::fsync(fd) == 0;
    ::close(fd);
    return ok;
#else
    Q_UNUSED(path);
    return true;
#endif
}

} // namespace

QString Backup::homeDrive() {
    const QString drive = qEnvironmentVariable("HOMEDRIVE");
    return drive.isEmpty() ? QDir::homePath() : drive;
}

QString Backup::datedFolder(const QString& homeDrive, const QDate& day) {
    return homeDrive + QStringLiteral("/TarvoQRBDB/") +
           formatDate(day, QStringLiteral("MM_DD_YYYY"));
}

Backup::Outcome Backup::makeCopy(const Database& database, const QString& homeDrive,
                                 const QDate& day) {
    Outcome out;
    out.folder = datedFolder(homeDrive, day);
    const QString shown = QDir::toNativeSeparators(out.folder);
    if (!QDir().mkpath(out.folder)) {
        out.error = QStringLiteral("The backup folder %1 cannot be made: the drive is not "
                                   "there, is read-only, or a file already has that name.")
                        .arg(shown);
        return out;
    }
    const QString target = out.folder + QLatin1Char('/') + QString::fromLatin1(Database::FileName);
    // Written under a name of its own: until it is whole and checked, the day's earlier
    // copy stays untouched.
    const QString fresh = target + QStringLiteral(".new");
    if (QFileInfo::exists(fresh) && !QFile::remove(fresh)) {
        out.error = QStringLiteral("%1 is left from an earlier back-up and cannot be removed.")
                        .arg(QDir::toNativeSeparators(fresh));
        return out;
    }
    try {
        DbSession s(database);
        s.run(QStringLiteral("VACUUM INTO ?"), {QDir::toNativeSeparators(fresh)});
    } catch (const StoreError& e) {
        QFile::remove(fresh);
        out.error = QStringLiteral("The database could not be copied to %1: %2\nThe earlier "
                                   "copy, if any, was kept.")
                        .arg(shown, e.text());
        return out;
    }
    if (const QString problem = problemOf(fresh); !problem.isEmpty() || !flushToDisk(fresh)) {
        QFile::remove(fresh);
        out.error =
            QStringLiteral("The copy written to %1 did not pass its check (%2). The "
                           "earlier copy, if any, was kept.")
                .arg(shown, problem.isEmpty() ? QStringLiteral("not on the disk") : problem);
        return out;
    }
    std::error_code ec;
    // One step that replaces the earlier copy, so there is always a whole one.
    std::filesystem::rename(std::filesystem::path(fresh.toStdU16String()),
                            std::filesystem::path(target.toStdU16String()), ec);
    if (ec) {
        QFile::remove(fresh);
        out.error = QStringLiteral("The copy could not take the place of %1: %2")
                        .arg(QDir::toNativeSeparators(target),
                             QString::fromLocal8Bit(ec.message().c_str()));
        return out;
    }
    out.ok = true;
    return out;
}

void backupDatabase(const Database& database, const QDate& today, Prompts& prompts,
                    const QString& title) {
    const Backup::Outcome outcome = Backup::makeCopy(database, Backup::homeDrive(), today);
    if (outcome.ok)
        prompts.message(QStringLiteral("Database file is successfully written to \r") +
                            QDir::toNativeSeparators(outcome.folder),
                        title, Prompts::Icon::Information);
    else
        prompts.message(outcome.error, title, Prompts::Icon::Critical);
}
