#pragma once

#include "base/app_folder.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QVariant>

#include <memory>
#include <stdexcept>

// A database failure, with a text the operator can read.
struct StoreError : std::runtime_error {
    using std::runtime_error::runtime_error;
    QString text() const { return QString::fromUtf8(what()); }
};

// The one database file of the console. One connection to it is kept, opened when first
// needed, with its prepared statements. Yet no lock is held between operations (see
// DbSession): another program can read, copy or replace the file between two of them. Each
// operation first checks that the file is still the one the connection has open (device,
// inode, size, modification time); if it changed or was replaced, it is opened afresh.
//
// The journal is a rollback journal with full syncs, never WAL: the file alone is always
// complete, and a copy of it is a whole backup.
class Database {
public:
    static constexpr auto FileName = "TarvoQRBDB.MDB";

    explicit Database(const AppFolder& folder);
    // A copy names the same file and keeps a connection of its own.
    Database(const Database& other);
    Database& operator=(const Database& other);
    ~Database();

    QString path() const { return path_; }

    // At start-up: creates a missing file with every table and the default rates row,
    // and checks an existing one (a database, with every table and column the console
    // uses; missing indexes are added, outgrown ones dropped). A damaged file or one of
    // another program is refused with a StoreError and left exactly as it was.
    void prepare() const;

private:
    friend class DbSession;
    struct Connection;

    QString path_;
    // Callers hold the database const; the connection and its statements are a cache.
    mutable std::unique_ptr<Connection> connection_;
};

// One operation on the database. The outermost session alive checks the file when it
// starts and, when it ends, resets every statement the operation used, so that nothing
// stays locked. A session made while another is alive further up the call stack joins that
// operation; it never restarts a statement the outer one may still be reading.
//
// run() hands out a query that shares its result with a cached prepared statement. Read it
// before the session ends (declare it after the session). numRowsAffected() and
// lastInsertId() are the connection's: read them before running anything else.
//
// Writes that belong together are one transaction:
//
//     DbSession s(db);
//     s.begin();
//     s.run(...);
//     s.run(...);
//     s.commit(); // without it nothing above is kept
//
// A session that ends, or is left by an exception, with its transaction open rolls it back.
// begin() inside another session's transaction makes a savepoint: its commit keeps the
// writes only if the outer transaction commits too; its rollback undoes only its own.
class DbSession {
public:
    explicit DbSession(const Database& database);
    ~DbSession();
    DbSession(const DbSession&) = delete;
    DbSession& operator=(const DbSession&) = delete;

    // Runs one statement with its values bound in order; throws StoreError on failure.
    QSqlQuery run(const QString& sql, const QVariantList& values = {});

    // The connection itself. A transaction begun on it directly is rolled back when the
    // operation ends unless committed; queries made on it are the caller's to finish.
    QSqlDatabase& db();

    // One transaction per session; each throws StoreError on failure. commit() without
    // begin() is an error; rollback() without an open transaction does nothing.
    void begin();
    void commit();
    void rollback();

private:
    Database::Connection& connection_;
    int transaction_ = 0; // the nesting level of the transaction this session began
};

// Yes/No columns: written as -1, any non-zero reads as true.
inline QVariant yesNo(bool value) {
    return value ? -1 : 0;
}
bool isYes(const QVariant& value);

// Refuses a text holding an apostrophe, which the console's statements do not accept in
// a typed value; the caller tells the operator before anything is written.
bool hasQuote(const QString& value);
