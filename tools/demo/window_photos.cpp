#include "window_photos.h"

#include "console/console.h"
#include "sales/report_layout.h"
#include "sales/report_window.h"
#include "ui/main_window.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDate>
#include <QDialog>
#include <QDir>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPdfWriter>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QTextStream>

#include <functional>
#include <tuple>

namespace {

class WindowPhotos {
public:
    WindowPhotos(Console& console, MainWindow& frame, const QString& folder)
        : console_(console), frame_(frame), folder_(folder),
          reports_(QDir(folder).filePath(QStringLiteral("reports"))) {}

    void takeAll() {
        // Leaving the day's event loop closed the frame, as the operator's "Close
        // Application?" does; it comes back for the pictures, without the day's windows,
        // so that each picture shows one window as it opens.
        frame_.findChild<QMdiArea*>()->closeAllSubWindows();
        frame_.show();
        settle();
        QDir(reports_).removeRecursively();
        QDir().mkpath(reports_);
        members();
        logOnAndSearch();
        users();
        monitoring();
        peek();
        rates();
        sales();
        datesAndReports();
        membersReport();
    }

    int taken() const { return taken_; }
    const QStringList& problems() const { return problems_; }

private:
    // The register with a member chosen, then found by a part of the name and edited;
    // abandoned, so that nothing is saved.
    void members() {
        if (!trigger("mnuCset"))
            return;
        QWidget* members = shown(QStringLiteral("Members"));
        if (!members)
            return problem(QStringLiteral("the members register did not open"));
        if (auto* grid = members->findChild<QAbstractItemView*>(QStringLiteral("grdMembers")))
            grid->setCurrentIndex(grid->model()->index(3, 0));
        save(window(members), QStringLiteral("members"));
        save(&frame_, QStringLiteral("main_with_members"));
        type(child<QLineEdit>(members, "txtskey"), QStringLiteral("an"));
        click(members, "cmdfind");
        click(members, "cmdedit");
        save(window(members), QStringLiteral("members_found_editing"));
        click(members, "cmdclose"); // abandons the edit
        click(members, "cmdclose");
    }

    // The log-on dialog with a PC chosen, and the member search it opens, part-way
    // through a name; both cancelled.
    void logOnAndSearch() {
        if (!trigger("tbar2"))
            return;
        auto* dialog = shown<QDialog>(QStringLiteral("logmem"));
        if (!dialog)
            return problem(QStringLiteral("the log-on dialog did not open"));
        if (auto* number = child<QComboBox>(dialog, "cmbNum")) {
            number->setCurrentIndex(qMin(4, number->count() - 1));
            Q_EMIT number->textActivated(number->currentText());
        }
        save(dialog, QStringLiteral("logmem"));
        click(dialog, "imgName");
        if (auto* search = shown<QDialog>(QStringLiteral("Gsearch"))) {
            for (auto* by : search->findChildren<QRadioButton*>(QStringLiteral("optwhat")))
                if (by->property("index").toInt() == 1)
                    by->click();
            type(child<QLineEdit>(search, "txtskey"), QStringLiteral("sa"));
            save(search, QStringLiteral("gsearch"));
            click(search, "cmdclose");
        } else {
            problem(QStringLiteral("the member search did not open"));
        }
        click(dialog, "cmdCancel");
    }

    // The operator accounts, browsing and with a new account being typed, never saved.
    void users() {
        if (!trigger("mnuuser"))
            return;
        auto* window = shown<QDialog>(QStringLiteral("frmUsers"));
        if (!window)
            return problem(QStringLiteral("the operator accounts did not open"));
        save(window, QStringLiteral("frm_users"));
        click(window, "cmdnew");
        type(child<QLineEdit>(window, "txtnuser"), QStringLiteral("Paolo"));
        save(window, QStringLiteral("frm_users_new"));
        click(window, "cmdclose");
    }

    // The terminal listing, the message archive and the terminal registry.
    void monitoring() {
        for (const auto& [action, name, file] : {std::tuple{"tbar1", "frmTabList", "frm_tab_list"},
                                                 std::tuple{"mnuTxtview", "frmtxtv", "frmtxtv"},
                                                 std::tuple{"mnuPCTerm", "ciptbl", "ciptbl"}}) {
            if (!trigger(action))
                continue;
            QWidget* w = shown(QString::fromLatin1(name));
            if (!w) {
                problem(QStringLiteral("%1 did not open").arg(QString::fromLatin1(name)));
                continue;
            }
            save(window(w), QString::fromLatin1(file));
            window(w)->close();
        }
    }

    // The processes of a PC on line, one of them chosen, and the snapshot of its screen.
    void peek() {
        const int pc = 3;
        auto* list = frame_.findChild<QAbstractItemView*>(QStringLiteral("lstTerminals"));
        list->setCurrentIndex(list->model()->index(pc - 1, 0));
        if (!trigger("mnupeek"))
            return;
        QWidget* viewer = shown(QStringLiteral("frmpeek"));
        if (!viewer)
            return problem(QStringLiteral("the process viewer did not open for PC %1").arg(pc));
        click(viewer, "cmdpeek");
        auto* processes = child<QListWidget>(viewer, "lstProc");
        if (!processes || !waitFor([processes] { return processes->count() > 0; }, 10000)) {
            problem(QStringLiteral("PC %1 did not send its processes").arg(pc));
        } else {
            // The terminal's own program, as the operator would look for it.
            const auto own = processes->findItems(QStringLiteral("tarvoqrb"), Qt::MatchContains);
            QListWidgetItem* chosen = own.isEmpty() ? processes->item(0) : own.first();
            chosen->setSelected(true);
            processes->scrollToItem(chosen, QAbstractItemView::PositionAtCenter);
            save(window(viewer), QStringLiteral("frmpeek"));
        }
        click(viewer, "CmdTrmPrv");
        if (waitFor([this] { return shown(QStringLiteral("frmTrmPrv")) != nullptr; }, 30000)) {
            QWidget* snapshot = shown(QStringLiteral("frmTrmPrv"));
            save(window(snapshot), QStringLiteral("frm_trm_prv"));
            window(snapshot)->close();
        } else {
            problem(QStringLiteral("PC %1 sent no snapshot").arg(pc));
        }
        window(viewer)->close();
    }

    void rates() {
        if (!trigger("mnuRateS"))
            return;
        auto* rates = shown<QDialog>(QStringLiteral("RatesSrv"));
        if (!rates)
            return problem(QStringLiteral("the rates window did not open"));
        save(rates, QStringLiteral("rates"));
        click(rates, "cmdclose");
    }

    // Today's sales, and a sale being filled in, closed unsaved.
    void sales() {
        if (!trigger("mnuEarn"))
            return;
        QWidget* today = shown(QStringLiteral("ASlsSrv"));
        if (!today)
            return problem(QStringLiteral("today's sales did not open"));
        save(window(today), QStringLiteral("aslssrv"));
        click(today, "Addsrv");
        if (auto* sale = shown<QDialog>(QStringLiteral("NewSrv"))) {
            if (auto* service = child<QComboBox>(sale, "cmbSrvc"))
                service->setCurrentIndex(qMin(2, service->count() - 1));
            type(child<QLineEdit>(sale, "txtor"), QStringLiteral("1432"));
            type(child<QLineEdit>(sale, "txtQty"), QStringLiteral("4"));
            save(sale, QStringLiteral("new_srv"));
            click(sale, "cmdclose");
        } else {
            problem(QStringLiteral("the service sale did not open"));
        }
        window(today)->close();
    }

    // The takings of the last week, a bar a day, and the rentals and summary reports of
    // those days, their pages as pictures.
    void datesAndReports() {
        if (!trigger("mnuSDate"))
            return;
        QWidget* dates = shown(QStringLiteral("frmSDates"));
        if (!dates)
            return problem(QStringLiteral("the date report did not open"));
        const QDate today = console_.clock().now().date();
        const QString format = QStringLiteral("MM/dd/yyyy");
        if (auto* range = child<QRadioButton>(dates, "optsd"))
            range->click();
        // Set whole: the boxes are masked, and the window reads them as they change.
        if (auto* from = child<QLineEdit>(dates, "txtbdate"))
            from->setText(today.addDays(-6).toString(format));
        if (auto* to = child<QLineEdit>(dates, "txtedate"))
            to->setText(today.toString(format));
        save(window(dates), QStringLiteral("frm_sdates_week"));
        for (const auto& [option, name] : {std::pair{0, "DRSDRG"}, std::pair{2, "DRSDAll"}}) {
            for (auto* report : dates->findChildren<QRadioButton*>(QStringLiteral("popt")))
                if (report->property("index").toInt() == option)
                    report->click();
            click(dates, "cmdPrint");
            reportPages(QString::fromLatin1(name));
        }
        window(dates)->close();
    }

    void membersReport() {
        if (trigger("mnuClist"))
            reportPages(QStringLiteral("DRMemList"));
    }

    // The report's preview window, then each of its pages as printed.
    void reportPages(const QString& name) {
        auto* report = shown<ReportWindow>(name);
        if (!report)
            return problem(QStringLiteral("the report %1 did not open").arg(name));
        window(report)->resize(1000, 720);
        save(window(report), name.toLower() + QStringLiteral("_preview"));
        const QString pdf = QDir(reports_).filePath(name + QStringLiteral(".pdf"));
        {
            QPdfWriter writer(pdf);
            writer.setPageLayout(reportPageLayout(report->report().document.layout()));
            if (!report->report().document.print(writer))
                problem(QStringLiteral("the pages of %1 could not be printed").arg(name));
        }
        // A page as the printer has it, at a size to read on a screen.
        QProcess pages;
        pages.start(QStringLiteral("pdftoppm"),
                    {QStringLiteral("-r"), QStringLiteral("70"), QStringLiteral("-png"), pdf,
                     QDir(reports_).filePath(name)});
        if (!pages.waitForFinished(60000) || pages.exitCode() != 0)
            problem(QStringLiteral("pdftoppm could not make pictures of %1").arg(pdf));
        const auto pngs =
            QDir(reports_).entryList({name + QStringLiteral("-*.png")}, QDir::Files).size();
        if (pngs != report->pageCount())
            problem(QStringLiteral("%1 pictures of the %2 pages of %3")
                        .arg(pngs)
                        .arg(report->pageCount())
                        .arg(name));
        taken_ += int(pngs);
        window(report)->close();
        settle();
    }

    // The window as the operator sees it: a child of the frame with its title bar.
    static QWidget* window(QWidget* w) {
        if (auto* sub = qobject_cast<QMdiSubWindow*>(w->parentWidget()))
            return sub;
        return w;
    }

    template <typename T = QWidget> T* shown(const QString& name) {
        for (T* w : frame_.findChildren<T*>(name))
            if (w->isVisible())
                return w;
        return nullptr;
    }

    template <typename T> T* child(QWidget* parent, const char* name) {
        auto* w = parent->findChild<T*>(QString::fromLatin1(name));
        if (!w)
            problem(
                QStringLiteral("no %1 in %2").arg(QString::fromLatin1(name), parent->objectName()));
        return w;
    }

    bool trigger(const char* name) {
        QAction* action = frame_.action(QString::fromLatin1(name));
        if (!action) {
            problem(QStringLiteral("the frame has no command %1").arg(QString::fromLatin1(name)));
            return false;
        }
        action->trigger();
        settle();
        return true;
    }

    void click(QWidget* parent, const char* name) {
        if (auto* button = child<QAbstractButton>(parent, name)) {
            button->click();
            settle();
        }
    }

    // Typed key by key, so that the window reacts as to the operator's typing.
    void type(QLineEdit* box, const QString& text) {
        if (!box)
            return;
        box->selectAll();
        for (const QChar c : text) {
            QKeyEvent press(QEvent::KeyPress, 0, Qt::NoModifier, QString(c));
            QCoreApplication::sendEvent(box, &press);
        }
        settle();
    }

    void save(QWidget* w, const QString& name) {
        settle();
        const QString path = QDir(folder_).filePath(name + QStringLiteral(".png"));
        if (w->grab().save(path))
            ++taken_;
        else
            problem(QStringLiteral("cannot write %1").arg(path));
    }

    // The windows' own timers and queued fills run before the next step.
    static void settle(int ms = 150) {
        QElapsedTimer t;
        t.start();
        while (t.elapsed() < ms)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }

    static bool waitFor(const std::function<bool()>& done, int ms) {
        QElapsedTimer t;
        t.start();
        while (!done() && t.elapsed() < ms)
            settle(50);
        return done();
    }

    void problem(const QString& text) {
        qWarning().noquote() << "PROBLEM:" << text;
        problems_ << text;
    }

    Console& console_;
    MainWindow& frame_;
    QString folder_;
    QString reports_;
    int taken_ = 0;
    QStringList problems_;
};

} // namespace

QStringList photographWindows(Console& console, MainWindow& frame, const QString& folder) {
    WindowPhotos photos(console, frame, folder);
    photos.takeAll();
    QTextStream(stdout) << "Window photos: " << photos.taken() << " pictures in " << folder
                        << Qt::endl;
    return photos.problems();
}
