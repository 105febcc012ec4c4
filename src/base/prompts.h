#pragma once

#include <QString>

// Every message box, question and input box of the console goes through this seam:
// the program shows real boxes, a test records each call and answers from a script.
class Prompts {
public:
    enum class Icon { None, Critical, Question, Exclamation, Information };
    enum class Buttons { Ok, OkCancel, YesNo };
    enum class Answer { Ok, Cancel, Yes, No };

    // The console's own box: a notice that may close itself, or a short input.
    struct ConsoleBox {
        QString title;
        QString text;
        QString extra;                            // shown under the text when not empty
        QString mode = QStringLiteral("Message"); // "Message" or "Input"
        int closeAfterMs = 0;                     // Timer1: closes a notice by itself; 0 = never
        int countdownMs = 0;                      // Timer2: refreshes the "OK(n)" countdown
        QChar passwordChar;                       // masks the input when set
        bool modal = true;                        // a notice from a tick or socket never waits
    };

    virtual ~Prompts() = default;

    // A modal box that waits for the operator's answer. An empty title shows the
    // program's name.
    virtual Answer ask(const QString& text, const QString& title, Buttons buttons, Icon icon) = 0;
    // A notice raised by a terminal or a timer: shown without holding up the caller, and
    // a flood of them never stacks up windows.
    virtual void notice(const QString& text, const QString& title, Icon icon) = 0;
    // Shows the console's own box; returns the typed text in "Input" mode, "" otherwise.
    virtual QString consoleBox(const ConsoleBox& box) = 0;

    void message(const QString& text, const QString& title = QString(), Icon icon = Icon::None) {
        ask(text, title, Buttons::Ok, icon);
    }
};

// The console's own box with the arguments it has always taken (all but the mode may be
// left out); returns the result text.
inline QString showConsoleBox(Prompts& prompts, const QString& mode, const QString& title = {},
                              const QString& text = {}, const QString& extra = {}, int timer1Ms = 0,
                              int timer2Ms = 0) {
    Prompts::ConsoleBox box;
    box.mode = mode;
    box.title = title;
    box.text = text;
    box.extra = extra;
    box.closeAfterMs = timer1Ms;
    box.countdownMs = timer2Ms;
    return prompts.consoleBox(box);
}

// Shows nothing and answers every question with Yes or OK: for programs that drive the
// console with no operator at the screen (benchmarks, the fuzz target).
class SilentPrompts final : public Prompts {
public:
    Answer ask(const QString&, const QString&, Buttons buttons, Icon) override {
        return buttons == Buttons::YesNo ? Answer::Yes : Answer::Ok;
    }
    void notice(const QString&, const QString&, Icon) override {}
    QString consoleBox(const ConsoleBox&) override { return QString(); }
};
