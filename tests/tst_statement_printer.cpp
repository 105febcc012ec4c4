// A billing statement printed where the printer set-up says, and kept as a PDF file when
// no printer takes it; the set-up itself, opened from the frame.
#include "billing/statement.h"
#include "store/printer_choice.h"
#include "support/files.h"
#include "support/frame_fixture.h"
#include "ui/statement_printer.h"

#include <QPrinterInfo>
#include <QRegularExpression>
#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;
using Kind = PrinterChoice::Kind;
using Where = StatementOutput::Where;
Q_DECLARE_METATYPE(PrinterChoice)

namespace {

const QDateTime PrintedAt(QDate(2026, 11, 15), QTime(9, 30, 12));
const QString Sending = u"Sending Billing Statement to Printer ..Please Wait.."_s;
const QString Title = u"Printing Billing"_s;

const BillFields Bill{.pc = 5,
                      .customerName = u"PEÑA, MARIA"_s,
                      .address = u"12 Rizal St., Makati"_s,
                      .timeIn = u"08:00:00"_s,
                      .timeOut = u"09:30:00"_s,
                      .consumed = u"01:30:00"_s,
                      .rentals = u"1,234.50"_s,
                      .otherCharges = u"25.00"_s,
                      .discount = u"123.45"_s,
                      .amountDue = u"1,136.05"_s};

QString run(const QString& program, const QStringList& arguments) {
    QProcess p;
    p.start(program, arguments);
    if (!p.waitForFinished() || p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0)
        return QString();
    return QString::fromUtf8(p.readAllStandardOutput());
}

QStringList trimmedEnds(QStringList lines) {
    for (QString& line : lines)
        while (line.endsWith(u' '))
            line.chop(1);
    return lines;
}

// The PDF's text, page by page, line by line, as the lines were set: the rule is 58
// characters wide, so its width on the page gives the pitch that pdftotext lays the
// characters out by. The page's margin is taken off, and blanks at line ends.
QList<QStringList> pdfPages(const QString& path) {
    const QString boxes = run(u"pdftotext"_s, {u"-bbox"_s, path, u"-"_s});
    static const QRegularExpression rule(
        uR"re(<word xMin="([\d.]+)" [^>]* xMax="([\d.]+)" [^>]*>-{58}</word>)re"_s);
    const auto m = rule.match(boxes);
    if (!m.hasMatch())
        return {};
    const double pitch = (m.captured(2).toDouble() - m.captured(1).toDouble()) / 58;
    QString text = run(u"pdftotext"_s, {u"-layout"_s, u"-fixed"_s, QString::number(pitch),
                                        u"-enc"_s, u"UTF-8"_s, path, u"-"_s});
    QList<QStringList> pages;
    text.chop(1); // the last page's end
    for (const QString& page : text.split(u'\f')) {
        QStringList lines = trimmedEnds(page.split(u'\n'));
        if (lines.last().isEmpty())
            lines.removeLast();
        qsizetype margin = 1000;
        for (const QString& line : lines)
            if (!line.isEmpty())
                margin = std::min(margin, line.indexOf(QRegularExpression(u"\\S"_s)));
        for (QString& line : lines)
            line.remove(0, margin);
        pages.append(lines);
    }
    return pages;
}

// Every box shown, as "kind: title: text".
QStringList told(const RecordingPrompts& prompts) {
    QStringList t;
    for (const auto& s : prompts.shown)
        t << s.kind + u": "_s + s.title + u": "_s + s.text;
    return t;
}

} // namespace

class StatementPrinterTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // The statement goes to a PDF file when that is chosen, and when no printer takes it;
    // the operator is told which. Nowhere only when no PDF file can be made either.
    void keptAsPdf_data() {
        QTest::addColumn<PrinterChoice>("choice"); // saved before printing; empty folder: default
        QTest::addColumn<QString>("file");         // relative to the data folder; empty: none
        QTest::addColumn<QStringList>("expectedTold");
        const QString sending = u"notice: "_s + Title + u": "_s + Sending;
        const QString noPrinter =
            u"ask: "_s + Title + u": No Printer is selected\rPrinting cancelled"_s;
        const QString file = u"Statement_2026-11-15_0930_PC05.pdf"_s;
        const QString kept = u"notice: "_s + Title + u": The billing statement is kept as "_s +
                             u"Statements/"_s + file + u'.';
        row("PDF chosen", PrinterChoice{Kind::Pdf, {}, u"Slips"_s, {}}, u"Slips/"_s + file,
            QStringList{sending});
        row("chosen printer gone",
            PrinterChoice{Kind::Printer, u"Tarvo Printer Nowhere To Be Found"_s, {}, {}},
            u"Statements/"_s + file, QStringList{sending, noPrinter, kept});
        row("no printer at all", PrinterChoice{}, u"Statements/"_s + file,
            QStringList{sending, noPrinter, kept});
        row("folder cannot be made", PrinterChoice{Kind::Pdf, {}, u"TarvoQRB.INI/Slips"_s, {}},
            QString(),
            QStringList{sending, u"ask: "_s + Title +
                                     u": The folder TarvoQRB.INI/Slips cannot be made, so the "
                                     u"billing statement is not kept."_s});
    }
    void keptAsPdf() {
        QFETCH(PrinterChoice, choice);
        QFETCH(QString, file);
        QFETCH(QStringList, expectedTold);
        if (choice.kind == Kind::SystemDefault && !QPrinterInfo::defaultPrinterName().isEmpty())
            QSKIP("this computer has a default printer");
        ConsoleFixture f;
        choice.save(*f.folder);
        const QStringList lines = statementLines(Bill, PrintedAt, 20);

        const StatementOutput out = printStatement(lines, 5, PrintedAt, *f.folder, f.prompts);
        QCOMPARE(out.where, file.isEmpty() ? Where::Nowhere : Where::PdfFile);
        QCOMPARE(out.name, file.isEmpty() ? QString() : f.dir.filePath(file));
        QCOMPARE(told(f.prompts).replaceInStrings(f.dir.path() + u'/', QString()), expectedTold);
        if (out.where != Where::PdfFile)
            return;
        QVERIFY(QFile::exists(out.name));
        const QList<QStringList> pages = pdfPages(out.name);
        QVERIFY2(!pages.isEmpty(), "pdftotext (poppler-utils, scripts/install-deps) reads no "
                                   "statement from the PDF");
        QCOMPARE(pages.size(), 1);
        QCOMPARE(pages.first(), trimmedEnds(lines));
    }

    // The set-up from the frame: a chosen printer that is gone shows as such, and the
    // choice made is written into the settings file among its other lines and printed by.
    void setUpFromTheFrame() {
        FrameFixture f;
        const QByteArray before = "16=NOFPC\n1=PAGE\nPlease don't Modify....\n"
                                  "Gone Laser=PRINTER\nPRINTER=PRINTTO\n";
        QVERIFY(f.writeFile(u"TarvoQRB.INI"_s, before));
        QVERIFY(f.show(u"Admin"_s));
        f.frame->action(u"mnuPrinter"_s)->trigger();
        auto* dialog = f.frame->findChild<QDialog*>(u"frmPrinter"_s);
        QVERIFY(dialog && dialog->isVisible());
        QCOMPARE(dialog->windowTitle(), u"Tarvo Printer Setup"_s);
        auto* cmbPrinter = dialog->findChild<QComboBox*>(u"cmbPrinter"_s);
        auto* txtFolder = dialog->findChild<QLineEdit*>(u"txtFolder"_s);
        QCOMPARE(cmbPrinter->currentText(), u"Gone Laser (not found)"_s);
        QCOMPARE(cmbPrinter->itemText(cmbPrinter->count() - 1), u"PDF file"_s);
        QCOMPARE(QDir::fromNativeSeparators(txtFolder->text()), f.dir.filePath(u"Statements"_s));
        QVERIFY(!dialog->findChild<QPushButton*>(u"cmdSettings"_s)->isEnabled());

        cmbPrinter->setCurrentIndex(cmbPrinter->count() - 1);
        txtFolder->setText(u"Slips"_s);
        dialog->findChild<QPushButton*>(u"cmdOK"_s)->click();
        QVERIFY(!dialog->isVisible());
        QCOMPARE(f.prompts.texts(), QStringList());
        const QString slips = f.dir.filePath(u"Slips"_s);
        QCOMPARE(readFile(f.folder->file(u"TarvoQRB.INI"_s)),
                 before.chopped(16) + "PDF=PRINTTO\n" + slips.toUtf8() + "=PDFFOLDER\n");
        QVERIFY(QFileInfo(slips).isDir());
        const StatementOutput out =
            printStatement(statementLines(Bill, PrintedAt, 20), 5, PrintedAt, *f.folder, f.prompts);
        QCOMPARE(out.name, slips + u"/Statement_2026-11-15_0930_PC05.pdf"_s);
    }
};

QTEST_MAIN(StatementPrinterTest)
#include "tst_statement_printer.moc"
