#include "base/clock.h"
#include "ui/console_box_dialog.h"
#include "ui/prompts_dialog.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <limits>

namespace {

Prompts::ConsoleBox notice(int closeAfterMs) {
    Prompts::ConsoleBox box;
    box.title = QStringLiteral("Calculating");
    box.text = QStringLiteral("Calculating new time limit");
    box.mode = QStringLiteral("Message");
    box.closeAfterMs = closeAfterMs;
    return box;
}

Prompts::ConsoleBox input(QChar mask = QChar()) {
    Prompts::ConsoleBox box;
    box.title = QStringLiteral("Administrative previlege required to unlock PC:3");
    box.text = QStringLiteral("Please enter administrator password");
    box.mode = QStringLiteral("Input");
    box.closeAfterMs = 5000; // an input ignores it
    box.passwordChar = mask;
    return box;
}

// A timer firing, without waiting for it.
void fire(QTimer* timer) {
    QVERIFY(QMetaObject::invokeMethod(timer, "timeout"));
}

template <typename T> T* part(QWidget& w, const char* name) {
    T* found = w.findChild<T*>(QString::fromLatin1(name));
    if (!found)
        qFatal("no %s", name);
    return found;
}

QList<QWidget*> visibleWindows(const QString& name) {
    QList<QWidget*> list;
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->isVisible() && w->objectName() == name)
            list << w;
    return list;
}

} // namespace

class TestConsoleBox : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void countdownClosesNotice_data();
    void countdownClosesNotice();
    void noticeWithoutTimerStays();
    void inputResult_data();
    void inputResult();
    void inputMasksWithGivenCharacter();
    void reopeningEmptiesInput();

    void consoleBoxReturnsTypedText();
    void askShowsExactBox();
    void thousandNoticesMakeOneWindow();
    void modelessBoxesDoNotStack();
};

void TestConsoleBox::countdownClosesNotice_data() {
    QTest::addColumn<qint32>("openedAt");
    QTest::newRow("ordinary") << qint32(1000000);
    // The up-time counter wraps past its largest value during the countdown.
    QTest::newRow("counter wraps") << qint32(std::numeric_limits<qint32>::max() - 1500);
}

void TestConsoleBox::countdownClosesNotice() {
    QFETCH(qint32, openedAt);
    ManualClock clock(openedAt);
    ConsoleBoxDialog dialog(clock);
    QCOMPARE(dialog.objectName(), QStringLiteral("MyMsgbox"));
    dialog.setBox(notice(5000));
    dialog.show();

    auto* ok = part<QPushButton>(dialog, "Label1");
    auto* timer1 = part<QTimer>(dialog, "Timer1");
    auto* timer2 = part<QTimer>(dialog, "Timer2");
    QCOMPARE(ok->text(), QStringLiteral("OK(5)"));
    QVERIFY(timer1->isActive() && timer2->isActive());
    QCOMPARE(timer1->interval(), 5000);
    QVERIFY(!part<QLineEdit>(dialog, "txtInput")->isVisible());
    QVERIFY(!part<QLabel>(dialog, "imgcancel")->isVisible());
    QVERIFY(!part<QPushButton>(dialog, "lblCancel")->isVisible());
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Calculating"));

    const QList<QPair<int, QString>> steps = {
        {400, "OK(5)"}, {1000, "OK(4)"}, {2000, "OK(2)"}, {1000, "OK(1)"}};
    for (const auto& [ms, label] : steps) {
        clock.advance(ms);
        fire(timer2);
        QCOMPARE(ok->text(), label);
    }
    QVERIFY(dialog.isVisible());
    clock.advance(600);
    fire(timer1);
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.result(), int(QDialog::Accepted));
    QCOMPARE(dialog.resultText(), QString());
}

void TestConsoleBox::noticeWithoutTimerStays() {
    ManualClock clock;
    ConsoleBoxDialog dialog(clock);
    dialog.setBox(notice(0));
    dialog.show();
    auto* ok = part<QPushButton>(dialog, "Label1");
    QCOMPARE(ok->text(), QStringLiteral("OK"));
    QVERIFY(!part<QTimer>(dialog, "Timer1")->isActive());
    clock.advance(60000);
    fire(part<QTimer>(dialog, "Timer2"));
    QCOMPARE(ok->text(), QStringLiteral("OK"));
    QVERIFY(dialog.isVisible());
    ok->click();
    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.resultText(), QString());
}

void TestConsoleBox::inputResult_data() {
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("closeBy");
    QTest::addColumn<QString>("result");
    QTest::newRow("enter") << "Key1"
                           << "enter"
                           << "Key1";
    QTest::newRow("OK label") << " spaced "
                              << "ok"
                              << " spaced ";
    QTest::newRow("empty input") << ""
                                 << "enter"
                                 << "";
    QTest::newRow("cancel label") << "Key1"
                                  << "lblCancel"
                                  << "";
    QTest::newRow("cancel picture") << "Key1"
                                    << "imgcancel"
                                    << "";
    QTest::newRow("escape") << "Key1"
                            << "escape"
                            << "";
}

void TestConsoleBox::inputResult() {
    QFETCH(QString, typed);
    QFETCH(QString, closeBy);
    QFETCH(QString, result);
    ManualClock clock;
    ConsoleBoxDialog dialog(clock);
    dialog.setBox(input());
    dialog.show();
    auto* txtInput = part<QLineEdit>(dialog, "txtInput");
    QVERIFY(txtInput->isVisible());
    QVERIFY(part<QLabel>(dialog, "imgcancel")->isVisible());
    QVERIFY(part<QPushButton>(dialog, "lblCancel")->isVisible());
    // An input never closes by itself.
    QVERIFY(!part<QTimer>(dialog, "Timer1")->isActive());
    QVERIFY(!part<QTimer>(dialog, "Timer2")->isActive());
    QCOMPARE(part<QPushButton>(dialog, "Label1")->text(), QStringLiteral("OK"));

    QTest::keyClicks(txtInput, typed);
    if (closeBy == QLatin1String("enter"))
        QTest::keyClick(txtInput, Qt::Key_Return);
    else if (closeBy == QLatin1String("ok"))
        part<QPushButton>(dialog, "Label1")->click();
    else if (closeBy == QLatin1String("lblCancel"))
        part<QPushButton>(dialog, "lblCancel")->click();
    else if (closeBy == QLatin1String("imgcancel"))
        QTest::mouseClick(part<QLabel>(dialog, "imgcancel"), Qt::LeftButton);
    else
        QTest::keyClick(txtInput, Qt::Key_Escape);

    QVERIFY(!dialog.isVisible());
    QCOMPARE(dialog.resultText(), result);
}

void TestConsoleBox::inputMasksWithGivenCharacter() {
    ManualClock clock;
    ConsoleBoxDialog dialog(clock);
    dialog.setBox(input(QLatin1Char('@')));
    dialog.show();
    auto* txtInput = part<QLineEdit>(dialog, "txtInput");
    QTest::keyClicks(txtInput, QStringLiteral("abc"));
    QCOMPARE(txtInput->displayText(), QStringLiteral("@@@"));
    QTest::keyClick(txtInput, Qt::Key_Return);
    QCOMPARE(dialog.resultText(), QStringLiteral("abc"));

    // The next box without a mask shows what is typed.
    dialog.setBox(input());
    dialog.show();
    QTest::keyClicks(txtInput, QStringLiteral("xy"));
    QCOMPARE(txtInput->displayText(), QStringLiteral("xy"));
}

void TestConsoleBox::reopeningEmptiesInput() {
    ManualClock clock;
    ConsoleBoxDialog dialog(clock);
    dialog.setBox(input());
    dialog.show();
    QTest::keyClicks(part<QLineEdit>(dialog, "txtInput"), QStringLiteral("left over"));
    part<QPushButton>(dialog, "lblCancel")->click();
    dialog.show();
    QVERIFY(part<QLineEdit>(dialog, "txtInput")->text().isEmpty());
    // A message after an input: the input box goes, and its text is no answer.
    dialog.hide();
    dialog.setBox(notice(0));
    dialog.show();
    QVERIFY(!part<QLineEdit>(dialog, "txtInput")->isVisible());
    part<QPushButton>(dialog, "Label1")->click();
    QCOMPARE(dialog.resultText(), QString());
}

void TestConsoleBox::consoleBoxReturnsTypedText() {
    ManualClock clock;
    WidgetPrompts prompts(clock);
    QTimer::singleShot(0, [] {
        const auto boxes = visibleWindows(QStringLiteral("MyMsgbox"));
        if (boxes.size() != 1)
            return;
        auto* txtInput = boxes.first()->findChild<QLineEdit*>(QStringLiteral("txtInput"));
        QTest::keyClicks(txtInput, QStringLiteral("Key1"));
        QTest::keyClick(txtInput, Qt::Key_Return);
    });
    QCOMPARE(prompts.consoleBox(input(QLatin1Char('@'))), QStringLiteral("Key1"));

    QTimer::singleShot(0, [] {
        const auto boxes = visibleWindows(QStringLiteral("MyMsgbox"));
        if (boxes.size() == 1)
            boxes.first()->findChild<QPushButton*>(QStringLiteral("Label1"))->click();
    });
    QCOMPARE(prompts.consoleBox(notice(0)), QString());
    QVERIFY(visibleWindows(QStringLiteral("MyMsgbox")).isEmpty());
}

void TestConsoleBox::askShowsExactBox() {
    ManualClock clock;
    WidgetPrompts prompts(clock);
    QString title, text;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QTimer::singleShot(0, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box)
            return;
        title = box->windowTitle();
        text = box->text();
        icon = box->icon();
        box->button(QMessageBox::No)->click();
    });
    const auto answer = prompts.ask(QStringLiteral("Delete user : Maria ?"), QString(),
                                    Prompts::Buttons::YesNo, Prompts::Icon::Critical);
    QCOMPARE(answer, Prompts::Answer::No);
    QCOMPARE(title, QStringLiteral("Tarvo QRB"));
    QCOMPARE(text, QStringLiteral("Delete user : Maria ?"));
    QCOMPARE(icon, QMessageBox::Critical);
}

void TestConsoleBox::thousandNoticesMakeOneWindow() {
    ManualClock clock;
    WidgetPrompts prompts(clock);
    const auto before = QApplication::topLevelWidgets().size();
    for (int i = 0; i < 1000; ++i)
        prompts.notice(QStringLiteral("EMT %1").arg(i), QStringLiteral("PC 3"),
                       Prompts::Icon::Information);

    QCOMPARE(QApplication::topLevelWidgets().size(), before + 1);
    const auto windows = visibleWindows(QStringLiteral("frmNotices"));
    QCOMPARE(windows.size(), 1);
    QVERIFY(!windows.first()->isModal());
    auto* list = windows.first()->findChild<QListWidget*>(QStringLiteral("lstNotices"));
    QVERIFY(list);
    QCOMPARE(list->count(), WidgetPrompts::NoticeLimit);
    QVERIFY(list->item(0)->text().endsWith(QStringLiteral("PC 3: EMT 999")));
    QVERIFY(list->item(list->count() - 1)->text().endsWith(QStringLiteral("PC 3: EMT 800")));
}

void TestConsoleBox::modelessBoxesDoNotStack() {
    ManualClock clock;
    WidgetPrompts prompts(clock);
    for (int i = 0; i < 10; ++i) {
        auto box = notice(5000);
        box.text = QStringLiteral("Client has reached desired time limit, it has been paused!");
        box.modal = false;
        QCOMPARE(prompts.consoleBox(box), QString());
    }
    const auto boxes = visibleWindows(QStringLiteral("MyMsgbox"));
    QCOMPARE(boxes.size(), 1);
    QVERIFY(!boxes.first()->isModal());
}

QTEST_MAIN(TestConsoleBox)
#include "tst_console_box.moc"
