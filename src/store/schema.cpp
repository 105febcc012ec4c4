#include "store/schema.h"

#include "store/database.h"

#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

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
// case and still through its index. The revenue indexes end with the amount, so that a
// sum over a range of dates is read from the index alone; SQLite prefers the type index
// when a type is given, so both carry it.
const char* const indexStatements[] = {
    ("CREATE INDEX IF NOT EXISTS tarvo_templog_day ON templog (datelog, CID COLLATE NOCASE, "
     "StartTime COLLATE NOCASE)"),
    "CREATE INDEX IF NOT EXISTS tarvo_revenue_sum ON TmpRvnD (Rdate, rtype COLLATE NOCASE, Amount)",
    ("CREATE INDEX IF NOT EXISTS tarvo_revenue_type_sum ON TmpRvnD (rtype COLLATE NOCASE, Rdate, "
     "Amount)"),
    "CREATE INDEX IF NOT EXISTS tarvo_ip_address ON SrvIPTable (TrmIP COLLATE NOCASE)",
    "CREATE INDEX IF NOT EXISTS tarvo_ip_socket ON SrvIPTable (SKIndex)",
    "CREATE INDEX IF NOT EXISTS tarvo_ip_pc ON SrvIPTable (PCno)",
    "CREATE INDEX IF NOT EXISTS tarvo_members_id ON members (CID COLLATE NOCASE)",
    // The member searches' order; it holds every field they compare, so a search that
    // finds few members reads the index alone and the table only for the rows shown.
    ("CREATE INDEX IF NOT EXISTS tarvo_members_name ON members (LN COLLATE NOCASE, FN COLLATE "
     "NOCASE, CID COLLATE NOCASE)"),
    "CREATE INDEX IF NOT EXISTS tarvo_users_name ON sysusers (\"user\" COLLATE NOCASE)",
    // Earlier indexes, each the leading part of one above: only extra work for every write.
    "DROP INDEX IF EXISTS tarvo_revenue_day",
    "DROP INDEX IF EXISTS tarvo_revenue_type",
};

QString fileLabel(const QString& path) {
    return QFileInfo(path).fileName();
}

// A connection of its own, with nothing set on it, for looking at a file that may yet be
// refused: the kept connection switches the journal mode when it opens, which would write
// to a file in WAL mode.
class ScratchConnection {
public:
    explicit ScratchConnection(const QString& path) {
        static quint64 serial = 0;
        name_ = QStringLiteral("tarvo-look-%1").arg(++serial);
        db_ = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name_);
        db_.setDatabaseName(path);
        db_.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=5000"));
        if (!db_.open()) {
            const QString why = db_.lastError().text();
            release();
            throw StoreError(QStringLiteral("The database file %1 cannot be opened: %2")
                                 .arg(path, why)
                                 .toStdString());
        }
    }
    ~ScratchConnection() { release(); }
    ScratchConnection(const ScratchConnection&) = delete;
    ScratchConnection& operator=(const ScratchConnection&) = delete;

    // Every row of a statement, its values in order.
    QList<QVariantList> rows(const QString& sql) {
        QSqlQuery q(db_);
        q.setForwardOnly(true);
        if (!q.exec(sql))
            throw StoreError(q.lastError().text().toStdString());
        QList<QVariantList> out;
        while (q.next()) {
            QVariantList row;
            for (int i = 0; i < q.record().count(); ++i)
                row << q.value(i);
            out << row;
        }
        if (q.lastError().isValid())
            throw StoreError(q.lastError().text().toStdString());
        return out;
    }

private:
    void release() {
        db_.close();
        db_ = QSqlDatabase();
        QSqlDatabase::removeDatabase(name_);
    }

    QString name_;
    QSqlDatabase db_;
};

// A database file whose heading counts more pages than the file holds.
bool cutShort(const QString& path) {
    QFile f(path);
    if (!f.open(QIODevice::ReadOnly))
        return false;
    const QByteArray head = f.read(100);
    if (head.size() < 32 || !head.startsWith(QByteArrayView("SQLite format 3\0", 16)))
        return false;
    const auto byte = [&head](int i) {
        return quint64(quint8(head.at(i)));
    };
    const quint64 pageSize = byte(16) << 8 | byte(17);
    const quint64 pages = byte(28) << 24 | byte(29) << 16 | byte(30) << 8 | byte(31);
    return pages * (pageSize == 1 ? 65536 : pageSize) > quint64(f.size());
}

// The tables of the file, by lower-case name; throws the refusals of a file the console
// must not touch.
QStringList inspect(const QString& path) {
    const auto damaged = [&path](const QString& why) {
        return StoreError(QStringLiteral("The database file %1 is damaged (%2). Nothing was "
                                         "written to it. Restore the last backup (Tarvo System, "
                                         "Back-Up Database makes one a day) in its place and "
                                         "start the console again.")
                              .arg(path, why)
                              .toStdString());
    };
    ScratchConnection c(path);
    QStringList present;
    try {
        for (const auto& row : c.rows(QStringLiteral("SELECT name FROM sqlite_master "
                                                     "WHERE type = 'table'")))
            present << row.value(0).toString().toLower();
    } catch (const StoreError& e) {
        // A file cut short keeps its database heading and loses its table list: a damaged
        // database, to be restored, rather than some other file.
        if (cutShort(path))
            throw damaged(e.text() + QStringLiteral("; the file is shorter than its heading says"));
        throw StoreError(QStringLiteral("%1 is damaged or is not a Tarvo QRB database (%2). "
                                        "It was left as it is.")
                             .arg(path, e.text())
                             .toStdString());
    }

    // A file damaged in its middle still lists its tables; it would fail later, at some
    // log-in, with a bare engine message. Its pages are read once here instead.
    QString damage;
    try {
        const auto rows = c.rows(QStringLiteral("PRAGMA quick_check"));
        if (rows.isEmpty() || rows.first().value(0).toString() != QLatin1String("ok"))
            damage = rows.isEmpty() ? QStringLiteral("no answer to the check")
                                    : rows.first().value(0).toString();
    } catch (const StoreError& e) {
        damage = e.text();
    }
    if (!damage.isEmpty())
        throw damaged(damage);

    int ours = 0;
    for (const auto& t : tables())
        ours += present.contains(QString::fromLatin1(t.name).toLower());
    if (ours == 0 && !present.isEmpty())
        throw StoreError(QStringLiteral("%1 belongs to another program: it has none of the "
                                        "console's tables. It was left as it is.")
                             .arg(path)
                             .toStdString());

    // Every column the console uses must be there before anything is added.
    for (const auto& t : tables()) {
        const QString name = QString::fromLatin1(t.name);
        if (!present.contains(name.toLower()))
            continue;
        QStringList columns;
        for (const auto& row : c.rows(QStringLiteral("PRAGMA table_info(\"%1\")").arg(name)))
            columns << row.value(1).toString().toLower();
        for (const auto& column : t.names)
            if (!columns.contains(column.toLower()))
                throw StoreError(QStringLiteral("%1: the table %2 has no column %3. The file was "
                                                "left as it is.")
                                     .arg(fileLabel(path), name, column)
                                     .toStdString());
    }
    return present;
}

} // namespace

void prepareSchema(const Database& database) {
    const QString path = database.path();
    const bool existed = QFileInfo::exists(path);
    if (existed && !QFileInfo(path).isFile())
        throw StoreError(QStringLiteral("%1 is not a file.").arg(path).toStdString());
    if (!existed) {
        // SQLite creates the file on open; make it here on purpose, and only here.
        QFile f(path);
        if (!f.open(QIODevice::WriteOnly))
            throw StoreError(QStringLiteral("The database file %1 cannot be created: %2")
                                 .arg(path, f.errorString())
                                 .toStdString());
    }

    const QStringList present = inspect(path);
    const bool fresh = present.isEmpty();
    DbSession s(database);
    s.begin();
    for (const auto& t : tables())
        if (!present.contains(QString::fromLatin1(t.name).toLower()))
            s.run(QStringLiteral("CREATE TABLE \"%1\" (%2)")
                      .arg(QString::fromLatin1(t.name), QString::fromLatin1(t.columns)));
    for (const char* sql : indexStatements)
        s.run(QString::fromLatin1(sql));
    if (fresh)
        s.run(QStringLiteral("INSERT INTO rates (RPH, mina, mint) VALUES (?, ?, ?)"),
              {20, 10.00, 30});
    s.commit();
}
