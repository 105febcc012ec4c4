#include "sales/report_export.h"

#include "base/format.h"
#include "sales/report_engine.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QTemporaryDir>

#include <xlsxwriter.h>

#include <cmath>

namespace {

// Excel keeps no more in one cell.
constexpr qsizetype CellTextLimit = 32767;

// One cell of an export: what the report shows, typed.
struct Cell {
    enum class Type { Empty, Text, Date, Number };
    Type type = Type::Empty;
    QString text;
    QDate date;
    double number = 0;
};

Cell cellOf(const QVariant& value, FieldFormat format) {
    if (value.isNull())
        return {};
    switch (format) {
    case FieldFormat::Date:
        if (const QDate d = dateValue(value); d.isValid())
            return {Cell::Type::Date, {}, d, 0};
        break;
    case FieldFormat::Money:
    case FieldFormat::Number:
        if (const auto a = amountValue(value))
            return {Cell::Type::Number, {}, {}, *a};
        break;
    case FieldFormat::Text:
        break;
    }
    const QString text = value.toString();
    return text.isEmpty() ? Cell{} : Cell{Cell::Type::Text, text, {}, 0};
}

QString csvText(const Cell& cell, FieldFormat format) {
    switch (cell.type) {
    case Cell::Type::Empty:
        return QString();
    case Cell::Type::Date:
        return cell.date.toString(Qt::ISODate);
    case Cell::Type::Number:
        return format == FieldFormat::Money ? formatNumber(cell.number, QStringLiteral("0.00"))
                                            : fieldText(cell.number, FieldFormat::Number);
    case Cell::Type::Text:
        break;
    }
    QString text = cell.text;
    // A spreadsheet would run a typed name such as "=HYPERLINK(...)" as a formula.
    static const QString formulaStarts = QStringLiteral("=+-@\t\r");
    if (formulaStarts.contains(text.front()))
        text.prepend(QLatin1Char('\''));
    if (text.contains(QLatin1Char(',')) || text.contains(QLatin1Char('"')) ||
        text.contains(QLatin1Char('\n')) || text.contains(QLatin1Char('\r')) ||
        text.front().isSpace() || text.back().isSpace())
        text = QLatin1Char('"') + text.replace(QLatin1Char('"'), QStringLiteral("\"\"")) +
               QLatin1Char('"');
    return text;
}

bool fail(QString* error, const QString& why) {
    if (error)
        *error = why;
    return false;
}

// Puts `bytes` at `path` in one replacement.
bool replaceWith(const QString& path, const QByteArray& bytes, QString* error) {
    QSaveFile out(path);
    if (!out.open(QIODevice::WriteOnly))
        return fail(error, out.errorString());
    if (out.write(bytes) != bytes.size()) {
        const QString why = out.errorString();
        out.cancelWriting();
        return fail(error, why);
    }
    if (!out.commit())
        return fail(error, out.errorString());
    return true;
}

QByteArray utf8(const QString& text) {
    return text.left(CellTextLimit).toUtf8();
}

} // namespace

bool exportCsv(const ReportDocument& report, const QString& path, QString* error) {
    const QList<ReportElement> fields = report.layout().fields();
    QStringList lines;
    QStringList head;
    for (const ReportElement& f : fields)
        head << f.text;
    lines << head.join(QLatin1Char(','));
    const ReportTable& rows = report.rows();
    for (qsizetype r = 0; r < rows.rowCount(); ++r) {
        QStringList line;
        for (const ReportElement& f : fields)
            line << csvText(cellOf(rows.value(r, f.text), f.format), f.format);
        lines << line.join(QLatin1Char(','));
    }
    const QByteArray bytes =
        QByteArray("\xEF\xBB\xBF") + lines.join(QStringLiteral("\r\n")).toUtf8() + "\r\n";
    return replaceWith(path, bytes, error);
}

bool exportXlsx(const ReportDocument& report, const QString& path, const QString& sheet,
                QString* error) {
    // The workbook is made aside and copied into place whole.
    QTemporaryDir scratch;
    if (!scratch.isValid())
        return fail(error, scratch.errorString());
    const QByteArray scratchPath = QFile::encodeName(scratch.filePath(QStringLiteral("x.xlsx")));
    QByteArray tmpdir = QFile::encodeName(scratch.path());
    lxw_workbook_options options{};
    options.tmpdir = tmpdir.data();
    lxw_workbook* book = workbook_new_opt(scratchPath.constData(), &options);
    if (!book)
        return fail(error, QStringLiteral("the workbook cannot be made"));
    lxw_worksheet* ws = workbook_add_worksheet(book, utf8(sheet.left(31)).constData());
    lxw_format* bold = workbook_add_format(book);
    format_set_bold(bold);
    lxw_format* dateFormat = workbook_add_format(book);
    format_set_num_format(dateFormat, "mm/dd/yyyy");
    lxw_format* moneyFormat = workbook_add_format(book);
    format_set_num_format(moneyFormat, "#,##0.00");

    const QList<ReportElement> fields = report.layout().fields();
    const ReportTable& rows = report.rows();
    lxw_error status = LXW_NO_ERROR;
    auto keep = [&status](lxw_error e) {
        if (status == LXW_NO_ERROR)
            status = e;
    };
    for (int c = 0; c < fields.size(); ++c) {
        keep(worksheet_write_string(ws, 0, lxw_col_t(c), utf8(fields[c].text).constData(), bold));
        // Columns as wide as the report has them, in characters.
        worksheet_set_column(ws, lxw_col_t(c), lxw_col_t(c),
                             std::max(10.0, fields[c].box.width() / 2), nullptr);
    }
    for (qsizetype r = 0; r < rows.rowCount() && status == LXW_NO_ERROR; ++r) {
        const auto row = lxw_row_t(r + 1);
        for (int c = 0; c < fields.size(); ++c) {
            const ReportElement& f = fields[c];
            const Cell cell = cellOf(rows.value(r, f.text), f.format);
            const auto col = lxw_col_t(c);
            switch (cell.type) {
            case Cell::Type::Empty:
                break;
            case Cell::Type::Date:
                if (cell.date.year() >= 1900) {
                    lxw_datetime d{cell.date.year(), cell.date.month(), cell.date.day(), 0, 0, 0};
                    keep(worksheet_write_datetime(ws, row, col, &d, dateFormat));
                } else {
                    keep(worksheet_write_string(
                        ws, row, col, utf8(cell.date.toString(Qt::ISODate)).constData(), nullptr));
                }
                break;
            case Cell::Type::Number:
                keep(
                    worksheet_write_number(ws, row, col, cell.number,
                                           f.format == FieldFormat::Money ? moneyFormat : nullptr));
                break;
            case Cell::Type::Text:
                keep(worksheet_write_string(ws, row, col, utf8(cell.text).constData(), nullptr));
                break;
            }
        }
    }
    worksheet_freeze_panes(ws, 1, 0);
    const lxw_error closed = workbook_close(book);
    if (status == LXW_NO_ERROR)
        status = closed;
    if (status != LXW_NO_ERROR)
        return fail(error, QString::fromUtf8(lxw_strerror(status)));

    QFile made(QFile::decodeName(scratchPath));
    if (!made.open(QIODevice::ReadOnly))
        return fail(error, made.errorString());
    return replaceWith(path, made.readAll(), error);
}

QString freeFilePath(const QString& folder, const QString& stem, const QDateTime& at,
                     const QString& extension) {
    const QDir dir(folder);
    const QString base = stem + at.toString(QStringLiteral("_yyyy-MM-dd_HHmm"));
    QString path = dir.filePath(base + QLatin1Char('.') + extension);
    for (int n = 2; QFileInfo::exists(path); ++n)
        path = dir.filePath(base + QStringLiteral("_%1.").arg(n) + extension);
    return path;
}
