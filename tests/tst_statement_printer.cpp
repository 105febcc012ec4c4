// A billing statement printed where the printer set-up says, and kept as a PDF file when
// no printer takes it; the set-up itself, opened from the frame.
#include "billing/statement.h"
#include "store/printer_choice.h"
#include "support/console_fixture.h"
#include "ui/main_window.h"
#include "ui/statement_printer.h"

#include <QPrinterInfo>
#include <QRegularExpression>
#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;
using Kind = PrinterChoice::Kind;
using Where = StatementOutput::Where;
Q_DECLARE_METATYPE(PrinterChoice)
Q_DECLARE_METATYPE(StatementOutput::Where)

namespace {

const QDateTime PrintedAt(QDate(2026, 11, 15), QTime(9, 30, 12));
const QString Sending = u"Sending Billing Statement to Printer ..Please Wait.."_s;
const QString Title = u"Printing Billing"_s;

BillFields aBill() {
    BillFields b;
    b.pc = 5;
    b.customerName = u"PEÑA, MARIA"_s;
    b.address = u"12 Rizal St., Makati"_s;
    b.timeIn = u"08:00:00"_s;
    b.timeOut = u"09:30:00"_s;
    b.consumed = u"01:30:00"_s;
    b.rentals = u"1,234.50"_s;
    b.otherCharges = u"25.00"_s;
    b.discount = u"123.45"_s;
    b.amountDue = u"1,136.05"_s;
    return b;
}

QString run(const QString& program, const QStringList& arguments) {
    QProcess p;
    p.start(program, arguments);
    if (!p.waitForFinished() || p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0)
        return QString();
    return QString::fromUtf8(p.readAllStandardOutput());
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
        QStringList lines = page.split(u'\n');
        if (lines.last().isEmpty())
            lines.removeLast();
        qsizetype margin = 1000;
        for (QString& line : lines) {
            while (line.endsWith(u' '))
                line.chop(1);
            if (!line.isEmpty())
                margin = std::min(margin, line.indexOf(QRegularExpression(u"\\S"_s)));
        }
        for (QString& line : lines)
            line.remove(0, margin);
        pages.append(lines);
    }
    return pages;
}

QStringList trimmedEnds(QStringList lines) {
    for (QString& line : lines)
        while (line.endsWith(u' '))
            line.chop(1);
    return lines;
}

} // namespace

class StatementPrinterTest : public QObject {
    Q_OBJECT

    std::unique_ptr<ConsoleFixture> fx;

    QStringList told() const {
        QStringList t;
        for (const auto& s : fx->prompts.shown)
            t << s.kind + u": "_s + s.title + u": "_s + s.text;
        return t;
    }

private Q_SLOTS:
    void init() { fx = std::make_unique<ConsoleFixture>(); }
    void cleanup() {
        for (QWidget* w : QApplication::topLevelWidgets())
            w->deleteLater();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        fx.reset();
    }

    // The statement goes to a PDF file when that is chosen, and when no printer takes it;
    // the operator is told which. Nowhere only when no PDF file can be made either.
    void keptAsPdf_data() {
        QTest::addColumn<PrinterChoice>("choice"); // saved before printing; empty folder: default
        QTest::addColumn<Where>("where");
        QTest::addColumn<QString>("file"); // relative to the data folder
        QTest::addColumn<QStringList>("expectedTold");
        const QString sending = u"notice: "_s + Title + u": "_s + Sending;
        const QString noPrinter =
            u"ask: "_s + Title + u": No Printer is selected\rPrinting cancelled"_s;
        const QString kept = u"notice: "_s + Title + u": The billing statement is kept as "_s;
        const QString file = u"Statement_2026-11-15_0930_PC05.pdf"_s;
        QTest::newRow("PDF chosen") << PrinterChoice{Kind::Pdf, {}, u"Slips"_s, {}}
                                    << Where::PdfFile << u"Slips/"_s + file << QStringList{sending};
        QTest::newRow("chosen printer gone")
            << PrinterChoice{Kind::Printer, u"Tarvo Printer Nowhere To Be Found"_s, {}, {}}
            << Where::PdfFile << u"Statements/"_s + file
            << QStringList{sending, noPrinter, kept + u"Statements/"_s + file + u'.'};
        QTest::newRow("no printer at all")
            << PrinterChoice{} << Where::PdfFile << u"Statements/"_s + file
            << QStringList{sending, noPrinter, kept + u"Statements/"_s + file + u'.'};
        QTest::newRow("folder cannot be made")
            << PrinterChoice{Kind::Pdf, {}, u"TarvoQRB.INI/Slips"_s, {}} << Where::Nowhere
            << QString()
            << QStringList{sending, u"ask: "_s + Title +
                                        u": The folder TarvoQRB.INI/Slips "
                                        u"cannot be made, so the billing "
                                        u"statement is not kept."_s};
    }
    void keptAsPdf() {
        QFETCH(PrinterChoice, choice);
        QFETCH(Where, where);
        QFETCH(QString, file);
        QFETCH(QStringList, expectedTold);
        if (choice.kind == Kind::SystemDefault && !QPrinterInfo::defaultPrinterName().isEmpty())
            QSKIP("this computer has a default printer");
        choice.save(*fx->folder);
        const QStringList lines = statementLines(aBill(), PrintedAt, 20);

        const StatementOutput out = printStatement(lines, 5, PrintedAt, *fx->folder, fx->prompts);
        QCOMPARE(out.where, where);
        QCOMPARE(out.name, file.isEmpty() ? QString() : fx->dir.filePath(file));
        QCOMPARE(told().replaceInStrings(fx->dir.path() + u'/', QString()), expectedTold);
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
        const QByteArray before = "16=NOFPC\n1=PAGE\nPlease don't Modify....\n"
                                  "Gone Laser=PRINTER\nPRINTER=PRINTTO\n";
        {
            QFile ini(fx->folder->file(u"TarvoQRB.INI"_s));
            QVERIFY(ini.open(QIODevice::WriteOnly));
            ini.write(before);
        }
        fx->start();
        MainWindow frame(*fx->console);
        frame.setModalShowsBlock(false);
        frame.show();
        frame.action(u"mnuPrinter"_s)->trigger();
        auto* dialog = frame.findChild<QDialog*>(u"frmPrinter"_s);
        QVERIFY(dialog && dialog->isVisible());
        QCOMPARE(dialog->windowTitle(), u"Tarvo Printer Setup"_s);
        auto* cmbPrinter = dialog->findChild<QComboBox*>(u"cmbPrinter"_s);
        auto* txtFolder = dialog->findChild<QLineEdit*>(u"txtFolder"_s);
        QCOMPARE(cmbPrinter->currentText(), u"Gone Laser (not found)"_s);
        QCOMPARE(cmbPrinter->itemText(cmbPrinter->count() - 1), u"PDF file"_s);
        QCOMPARE(QDir::fromNativeSeparators(txtFolder->text()), fx->dir.filePath(u"Statements"_s));
        QVERIFY(!dialog->findChild<QPushButton*>(u"cmdSettings"_s)->isEnabled());

        cmbPrinter->setCurrentIndex(cmbPrinter->count() - 1);
        txtFolder->setText(u"Slips"_s);
        dialog->findChild<QPushButton*>(u"cmdOK"_s)->click();
        QVERIFY(!dialog->isVisible());
        QCOMPARE(told(), QStringList());
        QFile ini(fx->folder->file(u"TarvoQRB.INI"_s));
        QVERIFY(ini.open(QIODevice::ReadOnly));
        QCOMPARE(ini.readAll(), before.chopped(16) + "PDF=PRINTTO\n" +
                                    fx->dir.filePath(u"Slips"_s).toUtf8() + "=PDFFOLDER\n");
        QVERIFY(QFileInfo(fx->dir.filePath(u"Slips"_s)).isDir());

        const StatementOutput out = printStatement(statementLines(aBill(), PrintedAt, 20), 5,
                                                   PrintedAt, *fx->folder, fx->prompts);
        QCOMPARE(out.name, fx->dir.filePath(u"Slips/Statement_2026-11-15_0930_PC05.pdf"_s));
    }
};

QTEST_MAIN(StatementPrinterTest)
#include "tst_statement_printer.moc"
