#include "base/clock.h"
#include "ui/console_box_dialog.h"
#include "ui/prompts_dialog.h"

#include <QApplication>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

namespace {

template <typename T> T* part(QWidget& w, const char* name) {
    return w.findChild<T*>(QString::fromLatin1(name));
}

} // namespace

class ConsoleBoxTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void countdownClosesNotice_data() {
        QTest::addColumn<qint32>("openedAt");
        QTest::newRow("ordinary") << qint32(1000000);
        // The up-time counter wraps past its largest value during the countdown.
        QTest::newRow("counter wraps") << qint32(0x7fffffff - 1500);
    }

    void countdownClosesNotice() {
        QFETCH(qint32, openedAt);
        ManualClock clock(openedAt);
        ConsoleBoxDialog dialog(clock);
        dialog.setBox({.mode = "Message", .closeAfterMs = 5000});
        dialog.show();
        QVERIFY(!part<QLineEdit>(dialog, "txtInput")->isVisible());
        auto* ok = part<QPushButton>(dialog, "Label1");
        auto* timer1 = part<QTimer>(dialog, "Timer1");
        QCOMPARE(ok->text(), QStringLiteral("OK(5)"));
        QVERIFY(timer1->isActive());
        QCOMPARE(timer1->interval(), 5000);
        for (const auto& [ms, label] : QList<QPair<int, QString>>{
                 {400, "OK(5)"}, {1000, "OK(4)"}, {2000, "OK(2)"}, {1000, "OK(1)"}}) {
            clock.advance(ms);
            QMetaObject::invokeMethod(part<QTimer>(dialog, "Timer2"), "timeout");
            QCOMPARE(ok->text(), label);
        }
        QVERIFY(dialog.isVisible());
        QMetaObject::invokeMethod(timer1, "timeout");
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.resultText(), QString());
    }

    void inputResult_data() {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("closeBy"); // Enter, a button, or a click on the cancel picture
        QTest::addColumn<QChar>("mask");
        QTest::newRow("enter, masked") << QString("Key1") << QString("enter") << QChar('@');
        QTest::newRow("OK, spaces kept") << QString(" spaced ") << QString("Label1") << QChar();
        QTest::newRow("empty input") << QString() << QString("enter") << QChar();
        QTest::newRow("cancel label") << QString("Key1") << QString("lblCancel") << QChar();
        QTest::newRow("cancel picture") << QString("Key1") << QString("imgcancel") << QChar('*');
    }

    void inputResult() {
        QFETCH(QString, typed);
        QFETCH(QString, closeBy);
        QFETCH(QChar, mask);
        ManualClock clock;
        ConsoleBoxDialog dialog(clock);
        auto* txtInput = part<QLineEdit>(dialog, "txtInput");
        dialog.setBox({.mode = "Input", .passwordChar = u'#'});
        dialog.show();
        QTest::keyClicks(txtInput, QStringLiteral("left over"));
        // A box on screen opens again as the new one: nothing typed or masked carries over.
        dialog.setBox({.mode = "Input", .closeAfterMs = 5000, .passwordChar = mask});
        // An input never closes by itself, whatever time it is given.
        QVERIFY(!part<QTimer>(dialog, "Timer1")->isActive());
        QTest::keyClicks(txtInput, typed);
        QCOMPARE(txtInput->displayText(), mask.isNull() ? typed : QString(typed.size(), mask));
        if (closeBy == "enter")
            QTest::keyClick(txtInput, Qt::Key_Return);
        else if (closeBy == "imgcancel")
            QTest::mouseClick(part<QWidget>(dialog, "imgcancel"), Qt::LeftButton);
        else
            part<QPushButton>(dialog, qPrintable(closeBy))->click();
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.resultText(), closeBy == "enter" || closeBy == "Label1" ? typed : "");
    }

    void widgetPrompts() {
        ManualClock clock;
        WidgetPrompts prompts(clock);
        QString seen;
        QTimer::singleShot(0, [&] {
            auto* q = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            seen = q->windowTitle() + '|' + q->text() +
                   (q->icon() == QMessageBox::Critical ? "|critical" : "");
            q->button(QMessageBox::No)->click();
        });
        QCOMPARE(prompts.ask("Delete user : Maria ?", {}, Prompts::Buttons::YesNo,
                             Prompts::Icon::Critical),
                 Prompts::Answer::No);
        QCOMPARE(seen, "Tarvo QRB|Delete user : Maria ?|critical");

        // Boxes and notices from timers and terminals never pile up windows.
        for (int i = 0; i < 1000; ++i) {
            if (i % 100 == 0)
                QCOMPARE(prompts.consoleBox({.closeAfterMs = 5000, .modal = false}), QString());
            prompts.notice(QStringLiteral("EMT %1").arg(i), "PC 3", Prompts::Icon::Information);
        }
        QStringList shown;
        QListView* list = nullptr;
        for (QWidget* w : QApplication::topLevelWidgets()) {
            if (w->isVisible())
                shown << w->objectName() + (w->isModal() ? " (modal)" : "");
            list = list ? list : part<QListView>(*w, "lstNotices");
        }
        shown.sort();
        QCOMPARE(shown, QStringList({"MyMsgbox", "frmNotices"}));
        const auto line = [&](int i) {
            return list->model()->index(i, 0).data().toString();
        };
        QCOMPARE(list->model()->rowCount(), WidgetPrompts::NoticeLimit);
        QVERIFY2(line(0).endsWith("PC 3: EMT 999"), qPrintable(line(0)));
        QVERIFY2(line(WidgetPrompts::NoticeLimit - 1).endsWith("PC 3: EMT 800"),
                 qPrintable(line(WidgetPrompts::NoticeLimit - 1)));

        // A long notice shows as one short line; the whole of it is a click away.
        const QString longText = QString(60000, QLatin1Char('x')) + QStringLiteral("\nEND");
        prompts.notice(longText, "PC 4", Prompts::Icon::Information);
        QVERIFY(line(0).size() <= WidgetPrompts::NoticeLineLength + 10);
        QVERIFY(!line(0).contains(QLatin1Char('\n')));
        auto* whole = list->window()->findChild<QPlainTextEdit*>("txtNotice");
        QVERIFY(whole);
        Q_EMIT list->clicked(list->model()->index(0, 0));
        QVERIFY(whole->toPlainText().endsWith("PC 4: " + longText));
    }
};

QTEST_MAIN(ConsoleBoxTest)
#include "tst_console_box.moc"
