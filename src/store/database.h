#pragma once

#include "base/app_folder.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QVariant>

#include <stdexcept>

// A database failure, with a text the operator can read.
struct StoreError : std::runtime_error {
    using std::runtime_error::runtime_error;
    QString text() const { return QString::fromUtf8(what()); }
};

// The one database file of the console. It is never held open: every operation opens
// it through a DbSession, runs its statements and closes it again, so the file can be
// copied between operations.
class Database {
public:
    static constexpr auto FileName = "TarvoQRBDB.MDB";

    explicit Database(const AppFolder& folder);
    QString path() const { return path_; }

    // At start-up: creates a missing file with every table and the default rates row,
    // and checks an existing one (a database, with every table and column the console
    // uses; missing indexes are added). A damaged file or one of another program is
    // refused with a StoreError and left exactly as it was.
    void prepare() const;

private:
    QString path_;
};

// One open of the database file; closed when it goes out of scope. Queries it hands out
// must go out of scope before it does (declare them after it).
class DbSession {
public:
    explicit DbSession(const Database& database);
    ~DbSession();
    DbSession(const DbSession&) = delete;
    DbSession& operator=(const DbSession&) = delete;

    // Runs one statement with its values bound in order; throws StoreError on failure.
    QSqlQuery run(const QString& sql, const QVariantList& values = {});
    QSqlDatabase& db() { return db_; }

private:
    QString name_;
    QSqlDatabase db_;
};

// Yes/No columns: written as -1, any non-zero reads as true.
inline QVariant yesNo(bool value) {
    return value ? -1 : 0;
}
bool isYes(const QVariant& value);

// Refuses a text holding an apostrophe, which the console's statements do not accept in
// a typed value; the caller tells the operator before anything is written.
bool hasQuote(const QString& value);
