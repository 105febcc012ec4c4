#pragma once

#include "sales/date_span.h"

#include <QList>
#include <QPageLayout>
#include <QRectF>
#include <QString>

// A banded report as data: what each band holds and where, in millimetres from the band's
// top left corner. The engine (ReportDocument) lays the bands on pages and paints them.

// How a bound field shows its value.
enum class FieldFormat {
    Text,   // as stored
    Date,   // "MM/dd/yyyy"
    Money,  // "#,##0.00"
    Number, // a count or a receipt number: no decimals when it is whole
};

struct ReportElement {
    enum class Kind {
        Label,   // fixed text; "%p" and "%P" become the page number and the page count
        Field,   // the value of `text`'s column in the current row
        Picture, // the resource file `text`, fitted into the box
        Rule,    // a horizontal line along the box's top edge
    };
    Kind kind = Kind::Label;
    QRectF box;
    QString text;
    // A label the code fills (lbldate, lbldrange, lblGrandTotal, lblCountMem); `text` is
    // shown when it is not filled.
    QString name;
    FieldFormat format = FieldFormat::Text;
    Qt::Alignment align = Qt::AlignLeft;
    double points = 9;
    bool bold = false;
};

struct ReportBand {
    double height = 0;
    QList<ReportElement> elements;
};

struct ReportLayout {
    QString name; // DRSDRG, DRSDSRV, DRSDAll, DRMemList
    QPageLayout::Orientation orientation = QPageLayout::Portrait;
    double width = 190;      // the design width; a narrower page scales the whole report down
    ReportBand reportHeader; // first page only
    ReportBand pageHeader;   // every page, under the report header on the first
    ReportBand detail;       // once per row
    ReportBand pageFooter;   // at the foot of every page
    ReportBand reportFooter; // after the last row

    // The detail band's fields in order: the columns a report's rows are exported with.
    QList<ReportElement> fields() const;
};

const ReportLayout& reportLayout(ReportKind kind);

// The paper the reports are designed for when nothing else is chosen: US Letter, the
// "short bond" of the café's printers, with 12.7 mm margins.
QPageLayout reportPageLayout(const ReportLayout& layout);
