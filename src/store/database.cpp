#include "store/database.h"

#include "store/schema.h"

#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlRecord>

#include <sys/stat.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

namespace {

QString missingText(const QString& path) {
    return QStringLiteral("The database file %1 is missing.").arg(path);
}

// What tells one file from another at the same path, and a file from itself after a write.
struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = -1; // -1: no file known
    qint64 modifiedNs = 0;

    bool sameFile(const FileIdentity& other) const {
        return device == other.device && inode == other.inode;
    }
    bool operator==(const FileIdentity&) const = default;
};

std::optional<FileIdentity> identityOf(const QByteArray& path) {
    struct stat st {};
    if (::stat(path.constData(), &st) != 0)
        return std::nullopt;
    return FileIdentity{st.st_dev, st.st_ino, st.st_size,
                        qint64(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec};
}

// A query that shares its result with `q`: the caller reads the cached statement's rows,
// and the cache can still reset it when the operation ends. Qt deprecates copying a query
// because copies are not independent; here that sharing is the point.
QT_WARNING_PUSH
QT_WARNING_DISABLE_DEPRECATED
QSqlQuery sharedWith(const QSqlQuery& q) {
    return q;
}
QT_WARNING_POP

// A SELECT whose rows have not all been read still holds the file's shared lock, and
// running its statement again would take the rows from under whoever reads them.
bool stillReading(const QSqlQuery& q) {
    return q.isActive() && q.isSelect() && q.at() != QSql::AfterLastRow;
}

} // namespace

// The kept connection, its statements and the state of the operation in progress.
struct Database::Connection {
    struct Statement {
        Statement(const QString& text, const QSqlDatabase& db) : sql(text), query(db) {}
        QString sql;
        QSqlQuery query;
        qsizetype values = 0;  // how many values it is run with
        quint64 operation = 0; // the last operation that used it
        bool keep = true;      // false: dropped when the operation ends
    };

    // Beyond these, statements are not kept past their operation: a loop that keeps a
    // query of each pass unread must not grow the cache without end.
    static constexpr size_t KeptPerText = 4;
    static constexpr size_t KeptTexts = 256;

    explicit Connection(const QString& file) : path(file), localPath(QFile::encodeName(file)) {
        static quint64 serial = 0;
        name = QStringLiteral("tarvo-%1").arg(++serial);
    }
    ~Connection() {
        close();
        if (db.isValid()) {
            db = QSqlDatabase();
            QSqlDatabase::removeDatabase(name);
        }
    }

    QString path;
    QByteArray localPath;
    QString name;
    QSqlDatabase db;
    FileIdentity opened; // the file the connection has open
    FileIdentity seen;   // that file as the last operation left it
    std::unordered_map<QString, std::vector<std::unique_ptr<Statement>>> statements;
    std::vector<Statement*> used; // by the operation in progress
    int sessions = 0;             // alive; the first one began the operation
    quint64 operation = 0;        // the operation in progress, or the last one
    int transactions = 0;         // levels open: a transaction and its savepoints
    bool rollBackAtEnd = false;   // a transaction no session answers for may be open

    void startOperation() {
        const auto now = identityOf(localPath);
        if (!now) {
            close();
            throw StoreError(missingText(path).toStdString());
        }
        if (!db.isOpen() || *now != seen) {
            close();
            open(*now);
        }
        ++operation;
    }

    void endOperation() {
        const std::vector<Statement*> done = std::move(used);
        used.clear();
        for (Statement* s : done)
            s->query.finish();
        for (Statement* s : done)
            if (!s->keep)
                drop(s);
        if (transactions > 0 || rollBackAtEnd) {
            // A transaction the operation left open would keep the file locked.
            try {
                control(QStringLiteral("ROLLBACK"));
            } catch (const StoreError&) {
                // none was open
            }
            transactions = 0;
            rollBackAtEnd = false;
        }
        if (statements.size() > KeptTexts)
            statements.clear();
        // Our own writes change the size and time; a file that took the place of ours
        // during the operation is opened at the next one.
        const auto now = identityOf(localPath);
        seen = now && now->sameFile(opened) ? *now : FileIdentity();
    }

    void open(const FileIdentity& file) {
        if (!db.isValid()) {
            db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
            db.setDatabaseName(path);
            db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
        }
        if (!db.open())
            throw StoreError(QStringLiteral("The database file %1 cannot be opened: %2")
                                 .arg(path, db.lastError().text())
                                 .toStdString());
        try {
            control(QStringLiteral("PRAGMA synchronous = FULL"));
            control(QStringLiteral("PRAGMA journal_mode = DELETE"));
        } catch (const StoreError&) {
            db.close();
            throw;
        }
        opened = seen = file;
    }

    void close() {
        used.clear();
        statements.clear(); // before the connection: a statement must not outlive it
        if (db.isOpen())
            db.close();
        transactions = 0;
        rollBackAtEnd = false;
        seen = FileIdentity();
    }

    // A prepared statement for `sql` that no one is still reading: the query of a session
    // further up the call stack, or one of this session still in use, is left alone and
    // another statement is prepared beside it.
    Statement& statementFor(const QString& sql, qsizetype values) {
        auto& list = statements[sql];
        for (const auto& s : list) {
            if (s->values != values || (s->operation == operation && stillReading(s->query)))
                continue;
            if (s->operation != operation) {
                s->operation = operation;
                used.push_back(s.get());
            }
            return *s;
        }
        auto s = std::make_unique<Statement>(sql, db);
        s->query.setForwardOnly(true);
        if (!s->query.prepare(sql)) {
            const QString why = s->query.lastError().text();
            if (list.empty())
                statements.erase(sql);
            throw StoreError(why.toStdString());
        }
        s->values = values;
        s->operation = operation;
        s->keep = list.size() < KeptPerText;
        used.push_back(s.get());
        list.push_back(std::move(s));
        return *list.back();
    }

    // After a failure: the statement is not trusted again.
    void drop(Statement* s) {
        used.erase(std::remove(used.begin(), used.end(), s), used.end());
        const auto it = statements.find(s->sql);
        if (it == statements.end())
            return;
        auto& list = it->second;
        list.erase(std::remove_if(list.begin(), list.end(),
                                  [s](const auto& kept) { return kept.get() == s; }),
                   list.end());
        if (list.empty())
            statements.erase(it);
    }

    // Runs one statement of the connection's own: settings and transaction control. The
    // query is gone on return, so it holds nothing.
    void control(const QString& sql) {
        QSqlQuery q(db);
        if (!q.exec(sql))
            throw StoreError(q.lastError().text().toStdString());
    }
};

Database::Database(const AppFolder& folder)
    : path_(folder.file(QString::fromLatin1(FileName))),
      connection_(std::make_unique<Connection>(path_)) {}

Database::Database(const Database& other)
    : path_(other.path_), connection_(std::make_unique<Connection>(path_)) {}

Database& Database::operator=(const Database& other) {
    if (this != &other) {
        path_ = other.path_;
        connection_ = std::make_unique<Connection>(path_);
    }
    return *this;
}

Database::~Database() = default;

void Database::prepare() const {
    prepareSchema(*this);
}

DbSession::DbSession(const Database& database) : connection_(*database.connection_) {
    if (connection_.sessions == 0)
        connection_.startOperation();
    ++connection_.sessions;
}

DbSession::~DbSession() {
    try {
        rollback();
    } catch (const StoreError&) {
        // The operation's end rolls back whatever is still open.
    }
    if (--connection_.sessions == 0)
        connection_.endOperation();
}

QSqlQuery DbSession::run(const QString& sql, const QVariantList& values) {
    auto& statement = connection_.statementFor(sql, values.size());
    for (qsizetype i = 0; i < values.size(); ++i)
        statement.query.bindValue(int(i), values[i]);
    if (!statement.query.exec()) {
        const QString why = statement.query.lastError().text();
        connection_.drop(&statement);
        throw StoreError(why.toStdString());
    }
    return sharedWith(statement.query);
}

QSqlDatabase& DbSession::db() {
    connection_.rollBackAtEnd = true;
    return connection_.db;
}

void DbSession::begin() {
    if (transaction_ > 0)
        throw StoreError("This session has a transaction open already.");
    const int level = connection_.transactions + 1;
    connection_.control(level == 1 ? QStringLiteral("BEGIN IMMEDIATE")
                                   : QStringLiteral("SAVEPOINT tarvo_%1").arg(level));
    connection_.transactions = transaction_ = level;
}

void DbSession::commit() {
    if (transaction_ == 0)
        throw StoreError("There is no transaction to commit.");
    connection_.control(transaction_ == 1 ? QStringLiteral("COMMIT")
                                          : QStringLiteral("RELEASE tarvo_%1").arg(transaction_));
    connection_.transactions = transaction_ - 1;
    transaction_ = 0;
}

void DbSession::rollback() {
    if (transaction_ == 0)
        return;
    const int level = transaction_;
    // Whatever happens next, this session's transaction is over; the operation's end rolls
    // back a transaction a failed statement left open.
    connection_.transactions = level - 1;
    transaction_ = 0;
    try {
        if (level == 1) {
            connection_.control(QStringLiteral("ROLLBACK"));
        } else {
            connection_.control(QStringLiteral("ROLLBACK TO tarvo_%1").arg(level));
            connection_.control(QStringLiteral("RELEASE tarvo_%1").arg(level));
        }
    } catch (const StoreError&) {
        connection_.rollBackAtEnd = true;
        throw;
    }
}

bool isYes(const QVariant& value) {
    if (value.isNull())
        return false;
    const QString text = value.toString().trimmed();
    if (text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0 ||
        text.compare(QLatin1String("yes"), Qt::CaseInsensitive) == 0)
        return true;
    return text.toDouble() != 0.0;
}

bool hasQuote(const QString& value) {
    return value.contains(QLatin1Char('\''));
}
