#include "sales/report_engine.h"

#include <QFontMetricsF>
#include <QPagedPaintDevice>
#include <QPainter>
#include <QSvgRenderer>

#include <algorithm>
#include <memory>

// The report pictures are compiled into a static library, whose resources the linker
// drops unless something refers to them. (Outside any namespace, as Qt requires.)
static void loadReportPictures() {
    static const bool loaded = [] {
        Q_INIT_RESOURCE(report_pictures);
        return true;
    }();
    Q_UNUSED(loaded);
}

namespace {
constexpr double MmPerInch = 25.4;
constexpr double RuleMm = 0.3;
} // namespace

ReportDocument::ReportDocument(const ReportLayout& layout, ReportTable rows,
                               QHash<QString, QString> labels)
    : layout_(layout), rows_(std::move(rows)), labels_(std::move(labels)) {}

QString ReportDocument::labelText(const ReportElement& label) const {
    if (!label.name.isEmpty()) {
        const auto filled = labels_.constFind(label.name);
        if (filled != labels_.constEnd())
            return *filled;
    }
    return label.text;
}

QList<ReportDocument::Page> ReportDocument::paginate(double pageHeight) const {
    QList<Page> pages;
    Page page;
    double y = 0;
    bool fresh = true; // nothing but headers on the page yet
    const double bottom = pageHeight - layout_.pageFooter.height;

    auto place = [&](const ReportBand& band, qsizetype row = -1) {
        page.append({&band, row, y});
        y += band.height;
    };
    auto startPage = [&](bool first, bool heads) {
        page.clear();
        y = 0;
        if (first)
            place(layout_.reportHeader);
        if (heads)
            place(layout_.pageHeader);
        fresh = true;
    };
    auto endPage = [&] {
        page.append({&layout_.pageFooter, -1, pageHeight - layout_.pageFooter.height});
        pages.append(page);
    };
    // A page that holds only the report footer needs no column heads.
    auto room = [&](const ReportBand& band, bool heads) {
        if (!fresh && y + band.height > bottom) {
            endPage();
            startPage(false, heads);
        }
        fresh = false;
    };

    startPage(true, true);
    for (qsizetype row = 0; row < rows_.rowCount(); ++row) {
        room(layout_.detail, true);
        place(layout_.detail, row);
    }
    if (layout_.reportFooter.height > 0 || !layout_.reportFooter.elements.isEmpty()) {
        room(layout_.reportFooter, false);
        place(layout_.reportFooter);
    }
    endPage();
    return pages;
}

ReportDocument::Fit ReportDocument::fit(const QPagedPaintDevice& device) const {
    Fit f;
    const double pixelsPerMm = device.logicalDpiX() / MmPerInch;
    const double widthMm = device.width() / pixelsPerMm;
    const double heightMm = device.height() / (device.logicalDpiY() / MmPerInch);
    f.scale = std::min(1.0, widthMm / layout_.width);
    f.pixelsPerMm = pixelsPerMm * f.scale;
    f.pageHeight = heightMm / f.scale;
    return f;
}

int ReportDocument::pageCount(const QPagedPaintDevice& device) const {
    return int(paginate(fit(device).pageHeight).size());
}

bool ReportDocument::print(QPagedPaintDevice& device) const {
    loadReportPictures();
    QPainter painter;
    if (!painter.begin(&device))
        return false;
    const Fit f = fit(device);
    const QList<Page> pages = paginate(f.pageHeight);
    for (qsizetype i = 0; i < pages.size(); ++i) {
        if (i > 0 && !device.newPage())
            return false;
        paintPage(painter, pages[i], int(i + 1), int(pages.size()), f);
    }
    return painter.end();
}

void ReportDocument::paintPage(QPainter& painter, const Page& page, int number, int count,
                               const Fit& fit) const {
    for (const Placed& placed : page)
        for (const ReportElement& e : placed.band->elements)
            paintElement(painter, e, placed.top, placed.row, number, count, fit);
}

void ReportDocument::paintElement(QPainter& painter, const ReportElement& e, double top,
                                  qsizetype row, int number, int count, const Fit& fit) const {
    const double k = fit.pixelsPerMm;
    const QRectF box(e.box.x() * k, (top + e.box.y()) * k, e.box.width() * k, e.box.height() * k);
    switch (e.kind) {
    case ReportElement::Kind::Rule:
        painter.setPen(QPen(Qt::black, RuleMm * k));
        painter.drawLine(box.topLeft(), box.topRight());
        return;
    case ReportElement::Kind::Picture: {
        QSvgRenderer svg(e.text);
        if (svg.isValid())
            svg.render(&painter, box);
        return;
    }
    case ReportElement::Kind::Label:
    case ReportElement::Kind::Field:
        break;
    }
    QString text;
    if (e.kind == ReportElement::Kind::Field) {
        text = fieldText(rows_.value(row, e.text), e.format);
    } else {
        text = labelText(e);
        text.replace(QLatin1String("%P"), QString::number(count));
        text.replace(QLatin1String("%p"), QString::number(number));
    }
    if (text.isEmpty())
        return;
    QFont font(QStringLiteral("Helvetica"));
    font.setStyleHint(QFont::SansSerif);
    font.setPointSizeF(e.points * fit.scale);
    font.setBold(e.bold);
    painter.setFont(font);
    painter.setPen(Qt::black);
    // A value wider than its column ends in "…" rather than running into the next one.
    const QFontMetricsF metrics(font, painter.device());
    painter.drawText(box, int(e.align) | Qt::TextSingleLine,
                     metrics.elidedText(text, Qt::ElideRight, box.width()));
}
