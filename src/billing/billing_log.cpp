#include "billing/billing_log.h"

#include "base/app_folder.h"
#include "base/format.h"
#include "base/text.h"
#include "billing/bill.h"

#include <QFile>

QString BillingLog::fileName(const QDate& day) {
    return QStringLiteral("TarvoQRB") + formatDate(day, QStringLiteral("MM_DD_YYYY")) +
           QStringLiteral(".LG2");
}

QString BillingLog::path(const QDate& day) const {
    return folder_.file(fileName(day));
}

QStringList BillingLog::fields(const BillFields& b) {
    const QString amounts = QStringLiteral("##,###,##0.#0");
    return {b.date,
            formatNumber(leadingNumber(b.receipt), QStringLiteral("000000")),
            b.timeIn,
            b.consumed,
            formatNumber(leadingNumber(b.discount), QStringLiteral("##0.#0")),
            b.discountType,
            b.customerName,
            formatNumber(leadingNumber(b.rentals), amounts),
            formatNumber(leadingNumber(b.otherCharges), amounts),
            formatNumber(leadingNumber(b.amountDue), amounts)};
}

void BillingLog::append(const QStringList& fields, const QDate& day) {
    failed_ = false;
    error_.clear();
    QFile file(path(day));
    const bool fresh = !file.exists();
    QByteArray text;
    if (fresh)
        text = "Save Log File for Billing Process: " +
               formatDate(day, QStringLiteral("MM_DD_YYYY")).toUtf8() +
               "\n DATE        OR#    IN     Consumed  %   %type   Dtls           TRG   TOC  DUE\n";
    text += fields.join(QLatin1Char(' ')).toUtf8() + '\n';
    // A full disk must not leave half a line behind: what was written is taken back.
    const qint64 before = fresh ? 0 : file.size();
    if (!file.open(QIODevice::Append) || file.write(text) != text.size() || !file.flush()) {
        failed_ = true;
        error_ = file.errorString();
        if (file.isOpen()) {
            file.close();
            fresh ? void(file.remove()) : void(file.resize(before));
        }
    }
}
