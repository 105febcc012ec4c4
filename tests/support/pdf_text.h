#pragma once

// Reading back what a PDF file shows, with poppler's tools.
#include <QProcess>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

inline QString runTool(const QString& program, const QStringList& arguments) {
    QProcess p;
    p.start(program, arguments);
    if (!p.waitForFinished(60000) || p.exitStatus() != QProcess::NormalExit || p.exitCode() != 0)
        return QString();
    return QString::fromUtf8(p.readAllStandardOutput());
}

// The text of each page, laid out as on the page.
inline QStringList pdfPageTexts(const QString& path) {
    QString text =
        runTool(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), QStringLiteral("-enc"),
                                              QStringLiteral("UTF-8"), path, QStringLiteral("-")});
    if (text.isEmpty())
        return {};
    if (text.endsWith(QLatin1Char('\f')))
        text.chop(1);
    return text.split(QLatin1Char('\f'));
}

// A page's text with every run of blanks made one, for finding a caption whatever the
// layout put between its words.
inline QString simplifiedPage(const QString& page) {
    QStringList lines;
    for (const QString& line : page.split(QLatin1Char('\n')))
        lines << line.simplified();
    return lines.join(QLatin1Char('\n'));
}

struct PdfWord {
    int page = 0;
    double xMin = 0, yMin = 0, xMax = 0, yMax = 0;
    QString text;
};

// Every word with its box, page by page (pdftotext -bbox).
inline QList<PdfWord> pdfWords(const QString& path) {
    const QString xml =
        runTool(QStringLiteral("pdftotext"), {QStringLiteral("-bbox"), path, QStringLiteral("-")});
    static const QRegularExpression tag(QStringLiteral(
        R"re(<page |<word xMin="([\d.]+)" yMin="([\d.]+)" xMax="([\d.]+)" yMax="([\d.]+)">([^<]*)</word>)re"));
    QList<PdfWord> words;
    int page = 0;
    for (auto it = tag.globalMatch(xml); it.hasNext();) {
        const auto m = it.next();
        if (m.captured(0).startsWith(QLatin1String("<page"))) {
            ++page;
            continue;
        }
        QString text = m.captured(5);
        text.replace(QLatin1String("&amp;"), QLatin1String("&"))
            .replace(QLatin1String("&lt;"), QLatin1String("<"))
            .replace(QLatin1String("&gt;"), QLatin1String(">"))
            .replace(QLatin1String("&quot;"), QLatin1String("\""))
            .replace(QLatin1String("&apos;"), QLatin1String("'"));
        words.append({page, m.captured(1).toDouble(), m.captured(2).toDouble(),
                      m.captured(3).toDouble(), m.captured(4).toDouble(), text});
    }
    return words;
}

// A phrase as printed on a page, its words' gaps told in blanks, the narrowest gap
// counting as one: "Page: 1  of 3" reads back with its two blanks. Empty when the words
// are not on the page one after another on one line.
inline QString spacedPhrase(const QList<PdfWord>& words, int page, const QStringList& phrase) {
    for (qsizetype i = 0; i + phrase.size() <= words.size(); ++i) {
        bool match = true;
        for (qsizetype j = 0; j < phrase.size() && match; ++j) {
            const PdfWord& w = words[i + j];
            match = w.page == page && w.text == phrase[j] &&
                    (j == 0 || qAbs(w.yMin - words[i].yMin) < 0.5);
        }
        if (!match)
            continue;
        auto gap = [&](qsizetype j) {
            return words[i + j].xMin - words[i + j - 1].xMax;
        };
        double blank = 1e9;
        for (qsizetype j = 1; j < phrase.size(); ++j)
            blank = qMin(blank, gap(j));
        QString out = phrase.first();
        for (qsizetype j = 1; j < phrase.size(); ++j)
            out += QString(qMax(1, qRound(gap(j) / blank)), QLatin1Char(' ')) + phrase[j];
        return out;
    }
    return QString();
}
