#pragma once

// Rows for the reports to read, written as billing, the service sale and the register
// write them, many in one transaction.
#include "store/database.h"

#include <QDate>
#include <QString>
#include <QVariantList>

struct RentalRow {
    QDate day;
    double amount = 0;
    QString cid;
    int pc = 1;
    QString startT = QStringLiteral("08:00:00");
    QString endT = QStringLiteral("09:30:00");
    QString consumed = QStringLiteral("01:30:00");
};

struct ServiceRow {
    QDate day;
    double amount = 0;
    QString description;
    double orNumber = 1001;
    QVariant unitPrice =
        QVariant(); // as the sale dialog kept it: a number or a text such as "1,250.00"
    double qty = 1;
};

struct MemberRow {
    QString cid, ln, fn, mn, adr;
    QDate since;
};

class RowWriter {
public:
    explicit RowWriter(const Database& db) : session_(db) { session_.begin(); }
    void commit() { session_.commit(); }

    void add(const RentalRow& r) {
        session_.run(QStringLiteral("INSERT INTO TmpRvnD (Rdate, rtype, Amount, CID, TID, StartT, "
                                    "EndT, Tcons) VALUES (?, 'GAMES_RENTALS', ?, ?, ?, ?, ?, ?)"),
                     {r.day, r.amount, r.cid, QString::number(r.pc), r.startT, r.endT, r.consumed});
    }
    void add(const ServiceRow& s) {
        const QVariant price = s.unitPrice.isValid() ? s.unitPrice : QVariant(s.amount / s.qty);
        session_.run(QStringLiteral("INSERT INTO TmpRvnD (Rdate, rtype, Amount, Orno, rdesc, "
                                    "subamnt, qty) VALUES (?, 'SERVICE', ?, ?, ?, ?, ?)"),
                     {s.day, s.amount, s.orNumber, s.description, price, s.qty});
    }
    void add(const MemberRow& m) {
        session_.run(QStringLiteral("INSERT INTO members (CID, LN, FN, MN, ADR, Disc, Status, "
                                    "mdate, Accuhrs) VALUES (?, ?, ?, ?, ?, 0, 'Active', ?, 0)"),
                     {m.cid, m.ln, m.fn, m.mn, m.adr, m.since});
    }

private:
    DbSession session_;
};
