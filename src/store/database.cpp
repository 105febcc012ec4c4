#include "store/database.h"

#include <QFileInfo>
#include <QSqlError>
#include <QSqlRecord>

#include <atomic>

namespace {

struct TableDef {
    const char* name;
    const char* columns; // the CREATE TABLE body
    QStringList names;   // the column names the console reads and writes
};

const QList<TableDef>& tables() {
    static const QList<TableDef> defs = {
        {"members",
         R"(CID TEXT COLLATE NOCASE, LN TEXT COLLATE NOCASE, FN TEXT COLLATE NOCASE,
            MN TEXT COLLATE NOCASE, ADR TEXT COLLATE NOCASE, Disc REAL,
            Status TEXT COLLATE NOCASE, mdate DATE, Accuhrs REAL)",
         {"CID", "LN", "FN", "MN", "ADR", "Disc", "Status", "mdate", "Accuhrs"}},
        {"rates", "RPH REAL, mina REAL, mint INTEGER", {"RPH", "mina", "mint"}},
        {"services", "Description TEXT COLLATE NOCASE, Amount REAL", {"Description", "Amount"}},
        {"promos",
         "ddtls TEXT COLLATE NOCASE, drange TEXT COLLATE NOCASE, dtype TEXT COLLATE NOCASE, "
         "Amount REAL",
         {"ddtls", "drange", "dtype", "Amount"}},
        {"templog",
         R"(CID TEXT COLLATE NOCASE, StartTime TEXT COLLATE NOCASE, aindex INTEGER,
            isout INTEGER, cdtls TEXT COLLATE NOCASE, datelog DATE, TickStart INTEGER,
            BkTick INTEGER, pcstat TEXT COLLATE NOCASE, stopwatch TEXT COLLATE NOCASE)",
         {"CID", "StartTime", "aindex", "isout", "cdtls", "datelog", "TickStart", "BkTick",
          "pcstat", "stopwatch"}},
        {"SrvIPTable",
         "TrmIP TEXT COLLATE NOCASE, PCno INTEGER, SKIndex INTEGER, Status INTEGER",
         {"TrmIP", "PCno", "SKIndex", "Status"}},
        {"TmpRvnD",
         R"(Rdate DATE, rtype TEXT COLLATE NOCASE, Amount REAL, CID TEXT COLLATE NOCASE,
            TID TEXT COLLATE NOCASE, StartT TEXT, EndT TEXT, Tcons TEXT, Orno REAL,
            rdesc TEXT COLLATE NOCASE, subamnt TEXT, qty REAL)",
         {"Rdate", "rtype", "Amount", "CID", "TID", "StartT", "EndT", "Tcons", "Orno", "rdesc",
          "subamnt", "qty"}},
        {"sysusers",
         R"("user" TEXT COLLATE NOCASE, utype TEXT COLLATE NOCASE, keys TEXT)",
         {"user", "utype", "keys"}},
    };
    return defs;
}

// One index per look-up the console makes. Text keys carry NOCASE so that a file made
// by another tool, whose columns compare exactly, is still searched without regard to
// case and still through its index.
const char* const indexStatements[] = {
    ("CREATE INDEX IF NOT EXISTS tarvo_templog_day ON templog (datelog, CID COLLATE NOCASE, "
     "StartTime COLLATE NOCASE)"),
    "CREATE INDEX IF NOT EXISTS tarvo_revenue_day ON TmpRvnD (Rdate, rtype COLLATE NOCASE)",
    "CREATE INDEX IF NOT EXISTS tarvo_revenue_type ON TmpRvnD (rtype COLLATE NOCASE, Rdate)",
    "CREATE INDEX IF NOT EXISTS tarvo_ip_address ON SrvIPTable (TrmIP COLLATE NOCASE)",
    "CREATE INDEX IF NOT EXISTS tarvo_ip_socket ON SrvIPTable (SKIndex)",
    "CREATE INDEX IF NOT EXISTS tarvo_ip_pc ON SrvIPTable (PCno)",
    "CREATE INDEX IF NOT EXISTS tarvo_members_id ON members (CID COLLATE NOCASE)",
    "CREATE INDEX IF NOT EXISTS tarvo_users_name ON sysusers (\"user\" COLLATE NOCASE)",
};

QString fileLabel(const QString& path) {
    return QFileInfo(path).fileName();
}

} // namespace

Database::Database(const AppFolder& folder) : path_(folder.file(QString::fromLatin1(FileName))) {}

void Database::prepare() const {
    const bool existed = QFileInfo::exists(path_);
    if (existed && !QFileInfo(path_).isFile())
        throw StoreError(QStringLiteral("%1 is not a file.").arg(path_).toStdString());
    if (!existed) {
        // SQLite creates the file on open; make it here on purpose, and only here.
        QFile f(path_);
        if (!f.open(QIODevice::WriteOnly))
            throw StoreError(QStringLiteral("The database file %1 cannot be created: %2")
                                 .arg(path_, f.errorString())
                                 .toStdString());
    }

    DbSession s(*this);
    QStringList present;
    try {
        auto q = s.run(QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table'"));
        while (q.next())
            present << q.value(0).toString().toLower();
    } catch (const StoreError& e) {
        throw StoreError(QStringLiteral("%1 is damaged or is not a Tarvo QRB database (%2). "
                                        "It was left as it is.")
                             .arg(path_, e.text())
                             .toStdString());
    }

    int ours = 0;
    for (const auto& t : tables())
        ours += present.contains(QString::fromLatin1(t.name).toLower());
    if (ours == 0 && !present.isEmpty())
        throw StoreError(QStringLiteral("%1 belongs to another program: it has none of the "
                                        "console's tables. It was left as it is.")
                             .arg(path_)
                             .toStdString());

    // Every column the console uses must be there before anything is added.
    for (const auto& t : tables()) {
        const QString name = QString::fromLatin1(t.name);
        if (!present.contains(name.toLower()))
            continue;
        QStringList columns;
        auto q = s.run(QStringLiteral("PRAGMA table_info(\"%1\")").arg(name));
        while (q.next())
            columns << q.value(1).toString().toLower();
        for (const auto& c : t.names)
            if (!columns.contains(c.toLower()))
                throw StoreError(QStringLiteral("%1: the table %2 has no column %3. The file was "
                                                "left as it is.")
                                     .arg(fileLabel(path_), name, c)
                                     .toStdString());
    }

    const bool fresh = present.isEmpty();
    s.db().transaction();
    try {
        for (const auto& t : tables())
            if (!present.contains(QString::fromLatin1(t.name).toLower()))
                s.run(QStringLiteral("CREATE TABLE \"%1\" (%2)")
                          .arg(QString::fromLatin1(t.name), QString::fromLatin1(t.columns)));
        for (const char* sql : indexStatements)
            s.run(QString::fromLatin1(sql));
        if (fresh)
            s.run(QStringLiteral("INSERT INTO rates (RPH, mina, mint) VALUES (?, ?, ?)"),
                  {20, 10.00, 30});
        if (!s.db().commit())
            throw StoreError(s.db().lastError().text().toStdString());
    } catch (...) {
        s.db().rollback();
        throw;
    }
}

DbSession::DbSession(const Database& database) {
    static std::atomic<quint64> serial{0};
    name_ = QStringLiteral("tarvo-%1").arg(++serial);
    if (!QFileInfo::exists(database.path()))
        throw StoreError(
            QStringLiteral("The database file %1 is missing.").arg(database.path()).toStdString());
    db_ = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name_);
    db_.setDatabaseName(database.path());
    db_.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
    if (!db_.open()) {
        const QString why = db_.lastError().text();
        db_ = QSqlDatabase();
        QSqlDatabase::removeDatabase(name_);
        throw StoreError(QStringLiteral("The database file %1 cannot be opened: %2")
                             .arg(database.path(), why)
                             .toStdString());
    }
}

DbSession::~DbSession() {
    db_.close();
    db_ = QSqlDatabase();
    QSqlDatabase::removeDatabase(name_);
}

QSqlQuery DbSession::run(const QString& sql, const QVariantList& values) {
    QSqlQuery q(db_);
    q.setForwardOnly(true);
    if (!q.prepare(sql))
        throw StoreError(q.lastError().text().toStdString());
    for (const auto& v : values)
        q.addBindValue(v);
    if (!q.exec())
        throw StoreError(q.lastError().text().toStdString());
    return q;
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
