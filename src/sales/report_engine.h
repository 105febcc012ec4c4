#pragma once

#include "sales/report_layout.h"
#include "sales/report_table.h"

#include <QHash>
#include <QList>
#include <QString>

class QPagedPaintDevice;
class QPainter;

// A banded report with its rows and filled labels, laid on pages and painted on a
// printer, a PDF writer or a print preview.
class ReportDocument {
public:
    ReportDocument(const ReportLayout& layout, ReportTable rows,
                   QHash<QString, QString> labels = {});

    const ReportLayout& layout() const { return layout_; }
    const ReportTable& rows() const { return rows_; }
    // A filled label's text (lbldate, lblGrandTotal, ...), else its design text.
    QString labelText(const ReportElement& label) const;

    // One band on a page: which band, for which row (detail only), how far down the page.
    struct Placed {
        const ReportBand* band = nullptr;
        qsizetype row = -1;
        double top = 0;
    };
    using Page = QList<Placed>;
    // The bands laid on pages `pageHeight` layout millimetres tall: the report header on
    // the first, the page header on each (but on one left with only the report footer),
    // as many rows as fit above the page footer, the report footer after the last row.
    // A page holds at least one row however short it is, so that laying out always ends.
    QList<Page> paginate(double pageHeight) const;

    // How the layout fits the device's printable area: layout millimetres to device
    // pixels (scaled down when the area is narrower than the design), and the page
    // height in layout millimetres.
    struct Fit {
        double pixelsPerMm = 1;
        double pageHeight = 0;
        double scale = 1;
    };
    Fit fit(const QPagedPaintDevice& device) const;
    int pageCount(const QPagedPaintDevice& device) const;

    // Paints every page; false when the device cannot be painted on or refuses a page.
    bool print(QPagedPaintDevice& device) const;

private:
    void paintPage(QPainter& painter, const Page& page, int number, int count,
                   const Fit& fit) const;
    void paintElement(QPainter& painter, const ReportElement& e, double top, qsizetype row,
                      int number, int count, const Fit& fit) const;

    ReportLayout layout_;
    ReportTable rows_;
    QHash<QString, QString> labels_;
};
