#include "billing/statement.h"

#include "base/format.h"

#include <QDir>
#include <QFileInfo>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPageSize>
#include <QPagedPaintDevice>
#include <QPainter>

#include <algorithm>

namespace {

const QString Rule(58, QLatin1Char('-'));

// Two items on one line, the second at the second column (after at least one blank).
QString twoItems(const QString& first, const QString& second) {
    return first.leftJustified(Statement::SecondColumn - 1) + QLatin1Char(' ') + second;
}

QString amountLine(const QString& text) {
    return QString(Statement::AmountIndent, QLatin1Char(' ')) + text;
}

// The largest size the text is set in; a wide page does not need a poster.
constexpr double LargestPoints = 10.0;
// The width the font is fitted to, so that ordinary statements share one size: the
// amount lines with a six-figure amount.
constexpr int UsualColumns = 64;
constexpr qsizetype HeadingRow = 0;
constexpr qsizetype AmountDueRow = 20;

} // namespace

QPageLayout Statement::pdfPageLayout() {
    return QPageLayout(QPageSize(QPageSize::A6), QPageLayout::Landscape, QMarginsF(10, 8, 10, 8),
                       QPageLayout::Millimeter);
}

QStringList statementLines(const BillFields& bill, const QDateTime& printedAt, double ratePerHour) {
    const QString arrow = QStringLiteral("->");
    const QString rate = formatNumber(ratePerHour, QStringLiteral("P ##0.#0"));
    return {
        QStringLiteral(">>>>>>>Tarvo QRB  Billing Statement<<<<<<<"),
        QStringLiteral(" "),
        twoItems(QStringLiteral("Date: ") + formatDateTime(printedAt, QStringLiteral("MM/DD/YY")),
                 QStringLiteral("Time: ") + formatDateTime(printedAt, QStringLiteral("HH:MM:SS"))),
        Rule,
        QStringLiteral("Customer Info"),
        arrow + bill.customerName,
        arrow + bill.address,
        Rule,
        QString(),
        QStringLiteral("[Rentals/Gaming]"),
        QString(),
        twoItems(QStringLiteral("Time IN : ") + bill.timeIn,
                 QStringLiteral("Time Out: ") + bill.timeOut),
        twoItems(QStringLiteral("Rate: ") + rate, QStringLiteral("Consumed: ") + bill.consumed),
        QString(),
        amountLine(QStringLiteral("Amount:  ") + bill.rentals),
        QString(),
        QStringLiteral("[Other Charges]"),
        amountLine(QStringLiteral("Amount: ") + bill.otherCharges),
        QStringLiteral("[Discounts]"),
        amountLine(QStringLiteral("Discount: ") + bill.discount),
        QStringLiteral("Amount Due: Php ") + bill.amountDue,
        Rule,
    };
}

bool paintStatement(const QStringList& lines, QPagedPaintDevice& device) {
    QPainter painter;
    if (!painter.begin(&device))
        return false;

    // The printable area, in the painter's coordinates.
    const QRectF area(0, 0, device.width(), device.height());
    qsizetype columns = UsualColumns;
    for (const QString& line : lines)
        columns = std::max(columns, line.size());
    const qsizetype rows = std::max<qsizetype>(lines.size(), 1);

    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setStyleHint(QFont::TypeWriter);
    font.setPointSizeF(LargestPoints);
    const QFontMetricsF large(font, &device);
    const double scale = std::min({1.0, area.width() / (columns * large.horizontalAdvance(u'0')),
                                   area.height() / (rows * large.lineSpacing())});
    // A little under the exact fit: glyph sizes do not scale exactly with the point size.
    font.setPointSizeF(LargestPoints * scale * 0.98);
    QFont bold = font;
    bold.setBold(true);
    const QFontMetricsF metrics(font, &device);

    for (qsizetype row = 0; row < lines.size(); ++row) {
        // The heading and the amount due stand out.
        painter.setFont(row == HeadingRow || row == AmountDueRow ? bold : font);
        const double baseline = row * metrics.lineSpacing() + metrics.ascent();
        painter.drawText(QPointF(0, baseline), lines[row]);
    }
    return painter.end();
}

QString statementPdfName(const QDateTime& printedAt, int pc) {
    return QStringLiteral("Statement_%1_%2_PC%3.pdf")
        .arg(printedAt.toString(QStringLiteral("yyyy-MM-dd")),
             printedAt.toString(QStringLiteral("HHmm")))
        .arg(pc, 2, 10, QLatin1Char('0'));
}

QString freeStatementPath(const QString& folder, const QDateTime& printedAt, int pc) {
    const QDir dir(folder);
    const QString name = statementPdfName(printedAt, pc);
    QString path = dir.filePath(name);
    for (int n = 2; QFileInfo::exists(path); ++n)
        path = dir.filePath(name.chopped(4) + QStringLiteral("_%1.pdf").arg(n));
    return path;
}
