#include "sales/report_layout.h"

#include <QPageSize>

namespace {

using Kind = ReportElement::Kind;
constexpr Qt::Alignment Left = Qt::AlignLeft | Qt::AlignVCenter;
constexpr Qt::Alignment Right = Qt::AlignRight | Qt::AlignVCenter;
constexpr Qt::Alignment Centre = Qt::AlignHCenter | Qt::AlignVCenter;

// Letter with half-inch margins leaves 190.5 by 254 mm.
constexpr double PortraitWidth = 190;
constexpr double LandscapeWidth = 254;
constexpr double Margin = 12.7;

const QString Picture = QStringLiteral(":/reports/report-brand.svg");

ReportElement label(const QRectF& box, const QString& text, double points = 9, bool bold = false,
                    Qt::Alignment align = Left) {
    ReportElement e;
    e.box = box;
    e.text = text;
    e.points = points;
    e.bold = bold;
    e.align = align;
    return e;
}

// A label the code fills, showing its design text until then.
ReportElement filled(const char* name, const QRectF& box, const QString& designText,
                     double points = 9, bool bold = false, Qt::Alignment align = Left) {
    ReportElement e = label(box, designText, points, bold, align);
    e.name = QString::fromLatin1(name);
    return e;
}

ReportElement field(const char* column, FieldFormat format, const QRectF& box,
                    Qt::Alignment align = Left, double points = 9) {
    ReportElement e;
    e.kind = Kind::Field;
    e.box = box;
    e.text = QString::fromLatin1(column);
    e.format = format;
    e.align = align;
    e.points = points;
    return e;
}

ReportElement rule(double y, double width) {
    ReportElement e;
    e.kind = Kind::Rule;
    e.box = QRectF(0, y, width, 0);
    return e;
}

// The brand block: the picture with the name and version beside it.
QList<ReportElement> brandBlock(double x) {
    ReportElement picture;
    picture.kind = Kind::Picture;
    picture.box = QRectF(x, 0, 16, 16);
    picture.text = Picture;
    return {picture, label(QRectF(x + 19, 1, 50, 7), QStringLiteral("Tarvo QRB"), 14, true),
            label(QRectF(x + 19, 8.5, 30, 5), QStringLiteral("v. 1.00"), 8)};
}

// "DATE:" and the time of printing in the top right corner.
QList<ReportElement> dateLine(double width) {
    return {label(QRectF(width - 72, 1, 12, 5), QStringLiteral("DATE:"), 9, true),
            filled("lbldate", QRectF(width - 60, 1, 60, 5), QString())};
}

// The header of the three takings reports.
ReportBand takingsHeader(double width, const QString& form, const QString& title) {
    ReportBand band;
    band.height = 44;
    band.elements << brandBlock(0) << dateLine(width);
    band.elements << label(QRectF(0, 18, width, 8), form, 15, true, Centre)
                  << label(QRectF(0, 26, width, 7), title, 12, false, Centre)
                  << label(QRectF(0, 36, 26, 5), QStringLiteral("Date Range:"), 9, true)
                  << filled("lbldrange", QRectF(27, 36, 120, 5), QString());
    return band;
}

ReportBand pageFooter(double width, const QString& version, const QString& pages) {
    ReportBand band;
    band.height = 10;
    band.elements << rule(2, width) << label(QRectF(0, 4, 80, 5), version, 8)
                  << label(QRectF(width - 80, 4, 80, 5), pages, 8, false, Right);
    return band;
}

// One column of a takings report: its head over its field.
struct Column {
    QString head;
    const char* field;
    FieldFormat format;
    double width;
    Qt::Alignment align = Left;
};

// The heads (the page header) and the fields (the detail band) of the columns, side by
// side with 1 mm between them; the last column ends at the design width. A column set
// to the right keeps a little more room before the next one, which may start at its
// left edge.
void addColumns(ReportLayout& layout, const QList<Column>& columns, double points = 9) {
    constexpr double RightPadding = 2.5;
    layout.pageHeader.height = 8;
    layout.detail.height = 5;
    double x = 0;
    for (qsizetype i = 0; i < columns.size(); ++i) {
        const Column& c = columns[i];
        const bool padded = (c.align & Qt::AlignRight) && i + 1 < columns.size();
        const QRectF box(x, 0, c.width - (padded ? RightPadding : 0), 5);
        layout.pageHeader.elements << label(box.translated(0, 1), c.head, points, true, c.align);
        layout.detail.elements << field(c.field, c.format, box, c.align, points);
        x += c.width + 1;
    }
    layout.pageHeader.elements << rule(6.8, layout.width);
}

// The grand total under the last column, its caption to the left of it.
ReportBand totalFooter(double width, double totalWidth, const QString& caption) {
    ReportBand band;
    band.height = 14;
    band.elements << rule(1.5, width)
                  << label(QRectF(0, 3, width - totalWidth - 2, 6), caption, 10, true, Right)
                  << filled("lblGrandTotal", QRectF(width - totalWidth, 3, totalWidth, 6),
                            QStringLiteral("0.00"), 10, true, Right)
                  << rule(10, width);
    return band;
}

ReportLayout rentals() {
    ReportLayout l;
    l.name = QStringLiteral("DRSDRG");
    l.width = PortraitWidth;
    l.reportHeader = takingsHeader(l.width, QStringLiteral("Tarvo QRB  Report Form"),
                                   QStringLiteral("Rentals / Gaming Report"));
    addColumns(l, {
                      {QStringLiteral("Date"), "Rdate", FieldFormat::Date, 22},
                      {QStringLiteral("Mem ID"), "CID", FieldFormat::Text, 24},
                      {QStringLiteral("PC#"), "TID", FieldFormat::Text, 11, Centre},
                      {QStringLiteral("Trans Type"), "rType", FieldFormat::Text, 32},
                      {QStringLiteral("TimeIn"), "StartT", FieldFormat::Text, 18},
                      {QStringLiteral("TimeOut"), "EndT", FieldFormat::Text, 18},
                      {QStringLiteral("Total"), "Tcons", FieldFormat::Text, 27},
                      {QStringLiteral("Amount"), "Amount", FieldFormat::Money, 31, Right},
                  });
    l.pageFooter =
        pageFooter(l.width, QStringLiteral("Tarvo QRB  v 1.00"), QStringLiteral("Page: %p  of %P"));
    l.reportFooter = totalFooter(l.width, 31, QStringLiteral("Grand Total for Rentals / Gaming:"));
    return l;
}

// In the services and the combined report "Amount" stands over the unit price and
// "Total" over the money taken, the last column, which the grand total sums.
ReportLayout services() {
    ReportLayout l;
    l.name = QStringLiteral("DRSDSRV");
    l.width = PortraitWidth;
    l.reportHeader = takingsHeader(l.width, QStringLiteral("Tarvo QRB Report Form"),
                                   QStringLiteral("Services "));
    addColumns(l, {
                      {QStringLiteral("Date"), "Rdate", FieldFormat::Date, 22},
                      {QStringLiteral("O.R. No.#"), "ORno", FieldFormat::Number, 24},
                      {QStringLiteral("Qty"), "qty", FieldFormat::Number, 12, Right},
                      {QStringLiteral("Description"), "Rdesc", FieldFormat::Text, 72},
                      {QStringLiteral("Amount"), "subAmnt", FieldFormat::Money, 26, Right},
                      {QStringLiteral("Total"), "Amount", FieldFormat::Money, 29, Right},
                  });
    l.pageFooter =
        pageFooter(l.width, QStringLiteral("Tarvo QRB  v 1.00"), QStringLiteral("Page: %p  of %P"));
    l.reportFooter = totalFooter(l.width, 29, QStringLiteral("Grand Total for Services:"));
    return l;
}

ReportLayout summary() {
    ReportLayout l;
    l.name = QStringLiteral("DRSDAll");
    l.orientation = QPageLayout::Landscape;
    l.width = LandscapeWidth;
    l.reportHeader = takingsHeader(l.width, QStringLiteral("Tarvo QRB  Report Form"),
                                   QStringLiteral("Rentals/Gaming and Services"));
    addColumns(l,
               {
                   {QStringLiteral("Date"), "Rdate", FieldFormat::Date, 20},
                   {QStringLiteral("Mem ID"), "CID", FieldFormat::Text, 20},
                   {QStringLiteral("PC#"), "TID", FieldFormat::Text, 9, Centre},
                   {QStringLiteral("Trans Type"), "rType", FieldFormat::Text, 27},
                   {QStringLiteral("TimeIn"), "StartT", FieldFormat::Text, 16},
                   {QStringLiteral("TimeOut"), "EndT", FieldFormat::Text, 16},
                   {QStringLiteral("Consumed"), "Tcons", FieldFormat::Text, 17},
                   {QStringLiteral("O.R. No.#"), "ORno", FieldFormat::Number, 18},
                   {QStringLiteral("Description"), "Rdesc", FieldFormat::Text, 42},
                   {QStringLiteral("Qty"), "qty", FieldFormat::Number, 10, Right},
                   {QStringLiteral("Amount"), "subAmnt", FieldFormat::Money, 24, Right},
                   {QStringLiteral("Total"), "Amount", FieldFormat::Money, 24, Right},
               },
               8);
    l.pageFooter =
        pageFooter(l.width, QStringLiteral("Tarvo QRB  v 1.00"), QStringLiteral("Page: %p  of %P"));
    l.reportFooter =
        totalFooter(l.width, 40, QStringLiteral("Grand Total for Rentals / Gaming and Services:"));
    return l;
}

// Two lines a member: the id, the last, first and middle names and the membership date
// on the first, the address under the names.
ReportLayout members() {
    ReportLayout l;
    l.name = QStringLiteral("DRMemList");
    l.width = PortraitWidth;
    const double w = l.width;
    l.reportHeader.height = 44;
    l.reportHeader.elements << brandBlock(0) << dateLine(w)
                            << label(QRectF(0, 18, w, 8), QStringLiteral("Tarvo Clients List"), 15,
                                     true, Centre)
                            << label(QRectF(0, 26, w, 7), QStringLiteral("Clients"), 12, false,
                                     Centre)
                            << filled("lblCountMem", QRectF(0, 36, w, 5),
                                      QStringLiteral("0 Member/s currently"), 9, true);
    l.pageHeader.height = 8;
    l.pageHeader.elements << label(QRectF(0, 1, 30, 5), QStringLiteral("Client ID:"), 9, true)
                          << label(QRectF(32, 1, 118, 5), QStringLiteral("Name & Address"), 9, true)
                          << label(QRectF(152, 1, 38, 5), QStringLiteral("Membership Date"), 9,
                                   true, Right)
                          << rule(6.8, w);
    l.detail.height = 10.5;
    l.detail.elements << field("CID", FieldFormat::Text, QRectF(0, 0.5, 30, 4.5))
                      << field("LN", FieldFormat::Text, QRectF(32, 0.5, 38, 4.5))
                      << field("FN", FieldFormat::Text, QRectF(71, 0.5, 38, 4.5))
                      << field("MN", FieldFormat::Text, QRectF(110, 0.5, 38, 4.5))
                      << field("ADR", FieldFormat::Text, QRectF(32, 5, 118, 4.5), Left, 8)
                      << field("MDATE", FieldFormat::Date, QRectF(152, 0.5, 38, 4.5), Right);
    l.pageFooter =
        pageFooter(w, QStringLiteral("Tarvo QRB v 1.00"), QStringLiteral("Page : %p of %P"));
    return l;
}

} // namespace

QList<ReportElement> ReportLayout::fields() const {
    QList<ReportElement> out;
    for (const ReportElement& e : detail.elements)
        if (e.kind == ReportElement::Kind::Field)
            out << e;
    return out;
}

const ReportLayout& reportLayout(ReportKind kind) {
    static const ReportLayout layouts[] = {rentals(), services(), summary(), members()};
    switch (kind) {
    case ReportKind::Rentals:
        return layouts[0];
    case ReportKind::Services:
        return layouts[1];
    case ReportKind::Summary:
        return layouts[2];
    case ReportKind::Members:
        break;
    }
    return layouts[3];
}

QPageLayout reportPageLayout(const ReportLayout& layout) {
    return QPageLayout(QPageSize(QPageSize::Letter), layout.orientation,
                       QMarginsF(Margin, Margin, Margin, Margin), QPageLayout::Millimeter);
}
