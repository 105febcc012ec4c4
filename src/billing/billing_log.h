#pragma once

#include <QDate>
#include <QString>
#include <QStringList>

class AppFolder;
struct BillFields;

// The day's billing log: "TarvoQRB" + "MM_DD_YYYY" + ".LG2" in the data folder, two
// heading lines when it is made, then one line per saved bill: ten fields joined by single
// blanks, not padded to the headings (they are only a guide).
class BillingLog {
public:
    explicit BillingLog(const AppFolder& folder) : folder_(folder) {}

    static QString fileName(const QDate& day);
    QString path(const QDate& day) const;
    // The ten fields of a bill as the log writes them: the date as it stands, the receipt
    // number read as a number in six digits, time in and consumed time as they stand, the
    // discount under "##0.#0", its type and the name as they stand, and the three amounts
    // read as numbers (so "1,234.50" is logged as 1.00, as it always was) under
    // "##,###,##0.#0".
    static QStringList fields(const BillFields& bill);

    // Appends a line of the given fields to the day's log. A log that cannot be written
    // (a read-only folder, a full disk) sets the error flag; the bill is saved all the same.
    void append(const QStringList& fields, const QDate& day);
    bool failed() const { return failed_; }
    QString error() const { return error_; }

private:
    const AppFolder& folder_;
    bool failed_ = false;
    QString error_;
};
