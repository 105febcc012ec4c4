// Every control of every window the console opens can be reached by assistive technology
// (screen readers and automation tools, over AT-SPI): it has an accessible name, and its
// object name as accessible description. The system's own printer settings, opened from
// the printer set-up, are the system's dialog and are left out.
#include "billing/bill_dialog.h"
#include "people/first_admin_dialog.h"
#include "people/log_in_dialog.h"
#include "people/member_search_dialog.h"
#include "server/session_start.h"
#include "support/frame_fixture.h"
#include "ui/prompts_dialog.h"

#include <QAccessible>
#include <QtTest>
#include <QtWidgets>

using namespace Qt::StringLiterals;

namespace {

// A control inside another control is part of it (a spin box's line edit, a view's
// header, a scroll area's bars) and is reached through it.
bool isControl(const QWidget* w) {
    return qobject_cast<const QAbstractButton*>(w) || qobject_cast<const QLineEdit*>(w) ||
           qobject_cast<const QComboBox*>(w) || qobject_cast<const QAbstractItemView*>(w) ||
           qobject_cast<const QTextEdit*>(w) || qobject_cast<const QPlainTextEdit*>(w) ||
           qobject_cast<const QAbstractSpinBox*>(w) || qobject_cast<const QTabBar*>(w) ||
           qobject_cast<const QMenuBar*>(w) || qobject_cast<const QMenu*>(w) ||
           (qobject_cast<const QAbstractSlider*>(w) && !qobject_cast<const QScrollBar*>(w));
}

bool isPartOfControl(const QWidget* w, const QWidget* window) {
    for (const QWidget* p = w->parentWidget(); p && p != window; p = p->parentWidget())
        if (isControl(p) && !qobject_cast<const QMenu*>(p) && !qobject_cast<const QMenuBar*>(p))
            return true;
    return false;
}

QString describe(QAccessibleInterface* face, const QString& objectName, const QString& where) {
    if (!face)
        return where + u": no accessible interface"_s;
    QStringList wrong;
    if (face->text(QAccessible::Name).trimmed().isEmpty())
        wrong << u"no accessible name"_s;
    if (objectName.isEmpty())
        wrong << u"no object name"_s;
    else if (face->text(QAccessible::Description) != objectName)
        wrong << u"description \"%1\" is not its object name"_s.arg(
            face->text(QAccessible::Description));
    return wrong.isEmpty() ? QString() : where + u": "_s + wrong.join(u", "_s);
}

// What keeps assistive technology from a control of `window`, one line per control.
QStringList problems(QWidget* window) {
    QStringList found;
    const QString title = window->objectName();
    QList<QWidget*> widgets = window->findChildren<QWidget*>();
    widgets.prepend(window);
    for (QWidget* w : widgets) {
        if (!isControl(w) || isPartOfControl(w, window))
            continue;
        const QString where = title + u" / "_s + w->metaObject()->className() + u' ' +
                              (w->objectName().isEmpty() ? u"(unnamed)"_s : w->objectName());
        found << describe(QAccessible::queryAccessibleInterface(w), w->objectName(), where);
        // Menu items are reached through their menu, as a screen reader reaches them.
        if (!qobject_cast<QMenu*>(w) && !qobject_cast<QMenuBar*>(w))
            continue;
        QAccessibleInterface* menu = QAccessible::queryAccessibleInterface(w);
        for (int i = 0; menu && i < menu->childCount(); ++i) {
            QAccessibleInterface* item = menu->child(i);
            auto* action = item ? qobject_cast<QAction*>(item->object()) : nullptr;
            if (!action || action->isSeparator())
                continue;
            // An item that opens a submenu is known by the submenu's name.
            const QString name = action->objectName().isEmpty() && action->menu()
                                     ? action->menu()->objectName()
                                     : action->objectName();
            found << describe(item, name, where + u" / item \""_s + action->text() + u'"');
        }
    }
    found.removeAll(QString());
    return found;
}

} // namespace

class AccessibilityTest : public QObject {
    Q_OBJECT

    std::unique_ptr<FrameFixture> fx;
    MainWindow* frame = nullptr;
    std::unique_ptr<WidgetPrompts> boxes; // the real boxes, over the frame

    Console& console() { return *fx->console; }

    // Problems of the modal window `open` shows; the window is closed again.
    QStringList problemsOfModal(const std::function<void()>& open) {
        QStringList found{u"no modal window opened"_s};
        QTimer::singleShot(0, this, [&found] {
            if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
                found = problems(dialog);
                dialog->reject();
            }
        });
        open();
        return found;
    }
    QStringList problemsOfChild(const QString& command, const QString& window) {
        frame->action(command)->trigger();
        auto* w = frame->findChild<QWidget*>(window);
        return w && w->isVisible() ? problems(w) : QStringList{window + u" did not open"_s};
    }

private Q_SLOTS:
    void init() {
        fx = std::make_unique<FrameFixture>();
        QVERIFY(fx->show(u"Admin"_s));
        frame = fx->frame.get();
        boxes = std::make_unique<WidgetPrompts>(fx->clock);
        boxes->setParentWindow(frame);
    }
    void cleanup() {
        boxes.reset();
        fx.reset();
    }

    void everyControlIsNamedAndDescribed_data() {
        QTest::addColumn<QString>("window");
        QTest::addColumn<QString>("command"); // the frame's command that opens it, if one does
        QTest::addColumn<QString>("button");  // then the button pressed in what it opened
        for (const char* window :
             {"main", "main with a window open", "main with the list floating", "frmLog",
              "frmFirstAdmin", "MyMsgbox message", "MyMsgbox input", "frmNotices", "question",
              "frmBill", "Gsearch", "frmtxtv", "frmpeek"})
            QTest::newRow(window) << QString::fromLatin1(window) << QString() << QString();
        // clang-format off
        const char* const opened[][3] = {
            {"frmLog2", "mnuSwitch", ""}, {"frmAbout", "mnuAbout", ""}, {"ATV", "tbar3", ""},
            {"RatesSrv", "mnuRateS", ""}, {"frmlp", "mnuRateS", "cmdplist"},
            {"frmPrinter", "mnuPrinter", ""}, {"frmUsers", "mnuuser", ""},
            {"Members", "mnuCset", ""}, {"ASlsSrv", "mnuEarn", ""}, {"NewSrv", "mnuEarn", "Addsrv"},
            {"frmSDates", "mnuSDate", ""}, {"DRMemList", "mnuClist", ""}, {"logmem", "tbar2", ""},
            {"frmTabList", "tbar1", ""}, {"ciptbl", "mnuPCTerm", ""},
        };
        // clang-format on
        for (const auto& [window, command, button] : opened)
            QTest::newRow(window) << QString::fromLatin1(window) << QString::fromLatin1(command)
                                  << QString::fromLatin1(button);
    }
    void everyControlIsNamedAndDescribed() {
        QFETCH(QString, window);
        QFETCH(QString, command);
        QFETCH(QString, button);
        QStringList found;
        Prompts::ConsoleBox box;
        box.title = u"Tarvo QRB"_s;
        box.text = u"Enter the administrator's password"_s;
        if (!button.isEmpty()) {
            frame->action(command)->trigger();
            frame->findChild<QPushButton*>(button)->click();
            auto* w = frame->findChild<QDialog*>(window);
            found = w && w->isVisible() ? problems(w) : QStringList{window + u" did not open"_s};
        } else if (!command.isEmpty()) {
            found = problemsOfChild(command, window);
        } else if (window.startsWith(u"main"_s)) {
            // The window menu lists the open windows when it opens.
            if (window.endsWith(u"open"_s)) {
                auto* form = new QWidget;
                form->setObjectName(u"frmProbe"_s);
                form->setWindowTitle(u"Probe"_s);
                frame->showForm(form, false);
            }
            // Qt describes a dock's buttons anew when it floats.
            if (window.endsWith(u"floating"_s))
                frame->findChild<QDockWidget*>(u"dockTerminals"_s)->setFloating(true);
            Q_EMIT frame->findChild<QMenu*>(u"mnuWin"_s)->aboutToShow();
            found = problems(frame);
        } else if (window == u"frmLog"_s) {
            LogInDialog logIn(console(), LogInDialog::Mode::Start);
            found = problems(&logIn);
        } else if (window == u"frmBill"_s) {
            logOnPc(console().sessionParts(), u"3"_s, u"M-0001"_s, u"CRUZ, JUAN"_s, -1);
            openBill(console(), *frame, 3, 3);
            auto* bill = frame->findChild<QDialog*>(window);
            found = bill ? problems(bill) : QStringList{window + u" did not open"_s};
        } else if (window == u"frmtxtv"_s) {
            frame->readNoticesOf(*boxes); // the notices are read there too
            boxes->notice(u"PC 3 asks for more time"_s, u"PC 3"_s, Prompts::Icon::Information);
            found = problemsOfChild(u"mnuTxtview"_s, window);
        } else if (window == u"frmpeek"_s) {
            auto terminal = fx->probe().online(7);
            QVERIFY(terminal);
            auto* list = frame->findChild<QListView*>(u"lstTerminals"_s);
            list->setCurrentIndex(list->model()->index(6, 0));
            found = problemsOfChild(u"mnupeek"_s, window);
        } else if (window == u"Gsearch"_s) {
            openMemberSearch(console(), *frame, [](const QString&, const QString&) {});
            auto* search = frame->findChild<QDialog*>(window);
            found = search ? problems(search) : QStringList{window + u" did not open"_s};
        } else if (window == u"frmFirstAdmin"_s) {
            FirstAdminDialog firstAdmin(console());
            found = problems(&firstAdmin);
        } else if (window == u"MyMsgbox message"_s) {
            box.mode = u"Message"_s;
            box.closeAfterMs = 5000;
            box.modal = false;
            boxes->consoleBox(box);
            found = problems(frame->findChild<QDialog*>(u"MyMsgbox"_s));
        } else if (window == u"MyMsgbox input"_s) {
            box.mode = u"Input"_s;
            box.passwordChar = u'*';
            found = problemsOfModal([&] { boxes->consoleBox(box); });
        } else if (window == u"frmNotices"_s) {
            boxes->notice(u"PC 3 asks for more time"_s, u"PC 3"_s, Prompts::Icon::Information);
            found = problems(frame->findChild<QDialog*>(window));
        } else if (window == u"question"_s) {
            found = problemsOfModal([&] {
                boxes->ask(u"Close Application?"_s, {}, Prompts::Buttons::OkCancel,
                           Prompts::Icon::Critical);
            });
        }
        QVERIFY2(found.isEmpty(), qPrintable(found.join(u'\n')));
    }
};

QTEST_MAIN(AccessibilityTest)
#include "tst_accessibility.moc"
