#pragma once

#include "base/prompts.h"

#include <QList>
#include <QStringList>

// Records every box the console shows and answers from a script (Yes/OK by default).
class RecordingPrompts final : public Prompts {
public:
    struct Shown {
        QString kind; // "ask", "notice" or "box"
        QString text;
        QString title;
        Buttons buttons = Buttons::Ok;
        Icon icon = Icon::None;
        Prompts::ConsoleBox box;
    };

    QList<Shown> shown;
    QList<Answer> answers; // taken in order by ask(); Yes/Ok when empty
    QStringList inputs;    // taken in order by consoleBox() in "Input" mode

    Answer ask(const QString& text, const QString& title, Buttons buttons, Icon icon) override {
        shown.append({QStringLiteral("ask"), text, title, buttons, icon, {}});
        if (!answers.isEmpty())
            return answers.takeFirst();
        return buttons == Buttons::YesNo ? Answer::Yes : Answer::Ok;
    }
    void notice(const QString& text, const QString& title, Icon icon) override {
        shown.append({QStringLiteral("notice"), text, title, Buttons::Ok, icon, {}});
    }
    QString consoleBox(const ConsoleBox& box) override {
        shown.append({QStringLiteral("box"), box.text, box.title, Buttons::Ok, Icon::None, box});
        if (box.mode == QLatin1String("Input") && !inputs.isEmpty())
            return inputs.takeFirst();
        return QString();
    }

    // The texts shown, or only those of one kind.
    QStringList texts(const QString& kind = {}) const {
        QStringList t;
        for (const auto& s : shown)
            if (kind.isEmpty() || s.kind == kind)
                t << s.text;
        return t;
    }
    // Each box shown as "text (title, icon)", to compare all three at once.
    QStringList described() const {
        static const char* icons[] = {"None", "Critical", "Question", "Exclamation", "Information"};
        QStringList t;
        for (const auto& p : shown)
            t << QStringLiteral("%1 (%2, %3)")
                     .arg(p.text, p.title, QLatin1String(icons[int(p.icon)]));
        return t;
    }
    const Shown* last() const { return shown.isEmpty() ? nullptr : &shown.last(); }
    void clear() { shown.clear(); }
};
