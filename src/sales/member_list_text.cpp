#include "sales/member_list_text.h"

#include "base/format.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPagedPaintDevice>
#include <QPainter>

#include <algorithm>

namespace {

using MemberListText::Columns;
using MemberListText::LinesPerPage;

constexpr int IdWidth = 10;
constexpr int NameWidth = 30;
constexpr int AddressWidth = 25;
constexpr int DateWidth = 12;
constexpr int HeaderLines = 6;
constexpr int FooterLines = 2;
constexpr int RowsPerPage = LinesPerPage - HeaderLines - FooterLines;

// A column's text, cut to its width and padded to it.
QString cell(const QString& text, int width) {
    return text.simplified().left(width).leftJustified(width);
}

QString bothEnds(const QString& left, const QString& right) {
    return left.leftJustified(Columns - int(right.size())) + right;
}

QString withoutTrailingBlanks(QString text) {
    while (text.endsWith(QLatin1Char(' ')))
        text.chop(1);
    return text;
}

// A text broken at blanks into lines of at most `width` characters (a word longer than
// that is cut), at most `most` of them.
QStringList wrapped(const QString& text, int width, int most) {
    QStringList lines;
    QString line;
    for (QString word : text.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        if (!line.isEmpty() && line.size() + 1 + word.size() <= width) {
            line += QLatin1Char(' ') + word;
            continue;
        }
        if (!line.isEmpty())
            lines << line;
        for (; word.size() > width; word.remove(0, width))
            lines << word.left(width);
        line = word;
    }
    if (!line.isEmpty() || lines.isEmpty())
        lines << line;
    return lines.mid(0, most);
}

// A member's lines: the id, name, address and membership date on the first, and under
// them what of a long name or address did not fit.
QStringList memberLines(const ReportTable& members, qsizetype row) {
    constexpr int MostLines = 3;
    auto value = [&](const char* column) {
        return members.value(row, QString::fromLatin1(column)).toString().trimmed();
    };
    QString name = value("LN");
    if (!value("FN").isEmpty() || !value("MN").isEmpty())
        name += QStringLiteral(", ") + value("FN") + QLatin1Char(' ') + value("MN");
    const QStringList names = wrapped(name, NameWidth, MostLines);
    const QStringList address = wrapped(value("ADR"), AddressWidth, MostLines);
    const QString since = fieldText(members.value(row, QStringLiteral("mdate")), FieldFormat::Date);
    QStringList lines;
    for (qsizetype i = 0; i < std::max(names.size(), address.size()); ++i) {
        const bool first = i == 0;
        lines << withoutTrailingBlanks(
            cell(first ? value("CID") : QString(), IdWidth) + QLatin1Char(' ') +
            cell(names.value(i), NameWidth) + QLatin1Char(' ') +
            cell(address.value(i), AddressWidth) + QLatin1Char(' ') +
            (first ? since.left(DateWidth) : QString()).rightJustified(DateWidth));
    }
    return lines;
}

} // namespace

QList<QStringList> memberListPages(const ReportTable& members, const QDateTime& printedAt) {
    const QString title = QStringLiteral("L I S T   O F   M E M B E R S");
    const QStringList head = {
        QString((Columns - title.size()) / 2, QLatin1Char(' ')) + title,
        QString(),
        bothEnds(QStringLiteral("Tarvo QRB"),
                 QStringLiteral("Printed: ") +
                     formatDateTime(printedAt, QStringLiteral("MM/DD/YYYY HH:MM:SS"))),
        QString(Columns, QLatin1Char('=')),
        (cell(QStringLiteral("ID"), IdWidth) + QLatin1Char(' ') +
         cell(QStringLiteral("NAME"), NameWidth) + QLatin1Char(' ') +
         cell(QStringLiteral("ADDRESS"), AddressWidth) + QLatin1Char(' ') +
         QStringLiteral("MEMBER SINCE").rightJustified(DateWidth)),
        QString(Columns, QLatin1Char('-')),
    };
    // The members' lines, a member never split over two pages.
    QList<QStringList> bodies(1);
    for (qsizetype r = 0; r < members.rowCount(); ++r) {
        const QStringList lines = memberLines(members, r);
        if (bodies.last().size() + lines.size() > RowsPerPage)
            bodies.append(QStringList());
        bodies.last() << lines;
    }
    if (members.rowCount() == 0)
        bodies.last() << QStringLiteral("No members are registered.");

    QList<QStringList> pages;
    const qsizetype pageCount = bodies.size();
    for (qsizetype p = 0; p < pageCount; ++p) {
        QStringList page = head + bodies[p];
        while (page.size() < LinesPerPage - FooterLines)
            page << QString();
        const QString total = p == pageCount - 1
                                  ? QStringLiteral("A Total of %1 Member/s").arg(members.rowCount())
                                  : QString();
        page << QString(Columns, QLatin1Char('-'))
             << bothEnds(total, QStringLiteral("Page %1 of %2").arg(p + 1).arg(pageCount));
        pages << page;
    }
    return pages;
}

bool paintTextPages(const QList<QStringList>& pages, QPagedPaintDevice& device) {
    QPainter painter;
    if (!painter.begin(&device))
        return false;
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setStyleHint(QFont::TypeWriter);
    font.setPointSizeF(10);
    const QFontMetricsF probe(font, &device);
    const double scale = std::min(device.width() / (Columns * probe.horizontalAdvance(u'0')),
                                  device.height() / (LinesPerPage * probe.lineSpacing()));
    // A little under the exact fit: glyph sizes do not scale exactly with the point size.
    font.setPointSizeF(10 * scale * 0.98);
    painter.setFont(font);
    const QFontMetricsF metrics(font, &device);
    for (qsizetype p = 0; p < pages.size(); ++p) {
        if (p > 0 && !device.newPage())
            return false;
        for (qsizetype line = 0; line < pages[p].size(); ++line)
            painter.drawText(QPointF(0, line * metrics.lineSpacing() + metrics.ascent()),
                             pages[p][line]);
    }
    return painter.end();
}
