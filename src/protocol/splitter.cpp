#include "protocol/splitter.h"

#include "protocol/protocol.h"

#include <algorithm>
#include <vector>

namespace Protocol {
namespace {

// A console word as the splitter sees it: one entry per distinct word text.
struct Word {
    QByteArrayView text;
    Shape shape = Shape::Bare; // of the form with an argument, when there is one
    QByteArrayView separator;  // between the word and a number ("PAUS " / "SBTK @")
    bool complete = false;     // the word alone is a whole message
};

// A tail left waiting for more data never grows past this; it then goes out as it is.
constexpr qsizetype MostPending = 1 << 20;

const std::vector<Word>& words() {
    static const std::vector<Word> list = [] {
        std::vector<Word> w;
        for (const auto& info : consoleWords()) {
            auto same = std::find_if(w.begin(), w.end(),
                                     [&](const Word& x) { return x.text == info.text; });
            if (same == w.end())
                same = w.insert(w.end(), Word{info.text, Shape::Bare, {}, false});
            if (info.shape == Shape::Bare) {
                same->complete = true;
            } else {
                same->shape = info.shape;
                same->separator = info.prefix.sliced(info.text.size());
            }
        }
        // Longest first, so a word is never taken for a shorter one it begins with.
        std::stable_sort(w.begin(), w.end(), [](const Word& a, const Word& b) {
            return a.text.size() > b.text.size();
        });
        return w;
    }();
    return list;
}

QByteArrayView rest(const QByteArray& buf, qsizetype pos) {
    return QByteArrayView(buf).sliced(pos);
}

// The word that starts at pos, whole; nullptr when none does.
const Word* wordAt(const QByteArray& buf, qsizetype pos) {
    if (pos >= buf.size())
        return nullptr;
    const QByteArrayView tail = rest(buf, pos);
    for (const Word& w : words())
        if (tail.startsWith(w.text))
            return &w;
    return nullptr;
}

// The bytes from pos to the end are the start of some word.
bool beginsWord(const QByteArray& buf, qsizetype pos) {
    const QByteArrayView tail = rest(buf, pos);
    for (const Word& w : words())
        if (tail.size() < w.text.size() && w.text.startsWith(tail))
            return true;
    return false;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Length of the run of digits (one leading minus allowed) that starts at pos.
qsizetype digitsAt(const QByteArray& buf, qsizetype pos) {
    qsizetype i = pos;
    if (i < buf.size() && buf[i] == '-')
        ++i;
    const qsizetype first = i;
    while (i < buf.size() && isDigit(buf[i]))
        ++i;
    return i == first ? 0 : i - pos;
}

// A console message can begin at pos: a word followed by what that word is always
// followed by. This is what ends a free text, so a word that merely occurs in a
// sentence ("please PAUSE") does not cut it.
bool plausibleStart(const QByteArray& buf, qsizetype pos) {
    const Word* w = wordAt(buf, pos);
    if (!w)
        return false;
    const qsizetype after = pos + w->text.size();
    const bool end = after >= buf.size();
    const QByteArrayView tail = rest(buf, qMin(after, buf.size()));
    switch (w->shape) {
    case Shape::Bare:
        return true;
    case Shape::Number: {
        const qsizetype number = after + w->separator.size();
        const bool numbered =
            tail.startsWith(w->separator) && (number == buf.size() || digitsAt(buf, number) > 0);
        if (!w->complete)
            return tail.startsWith(w->separator);
        return end || wordAt(buf, after) || numbered;
    }
    case Shape::Time:
    case Shape::ProductList:
    case Shape::Text:
        return !end && buf[after] == ' ';
    default:
        return false;
    }
}

qsizetype nextStart(const QByteArray& buf, qsizetype from) {
    for (qsizetype q = from; q < buf.size(); ++q)
        if (plausibleStart(buf, q))
            return q;
    return buf.size();
}

// Length of a product list that starts at pos; 0 when it needs more data to be whole.
qsizetype productListLength(const QByteArray& buf, qsizetype pos, qsizetype after) {
    // Each item is ended by ";"; the list by "End" where an item would begin.
    const qsizetype n = buf.size();
    qsizetype item = after + 1;
    while (item < n) {
        const QByteArrayView tail = rest(buf, item);
        if (tail.startsWith("End") && (item + 3 == n || plausibleStart(buf, item + 3)))
            return item + 3 - pos;
        if (tail.size() < 3 && QByteArrayView("End").startsWith(tail))
            return 0;
        const qsizetype semi = buf.indexOf(';', item);
        if (semi < 0)
            return 0;
        item = semi + 1;
    }
    return 0;
}

// Length of a word followed by a number; 0 when it needs more data to be whole.
qsizetype numberLength(const QByteArray& buf, qsizetype pos, const Word& w) {
    const qsizetype n = buf.size();
    const qsizetype after = pos + w.text.size();
    const QByteArrayView separator = w.separator;
    const QByteArrayView tail = rest(buf, qMin(after, n));
    if (w.complete && after >= n)
        return w.text.size();
    if (tail.size() < separator.size())
        return separator.startsWith(tail) ? 0 : w.text.size();
    if (!tail.startsWith(separator))
        return w.text.size();
    const qsizetype number = after + separator.size();
    const qsizetype digits = digitsAt(buf, number);
    if (digits == 0) {
        if (number == n)
            return 0;
        return w.complete ? w.text.size() : number - pos;
    }
    return number + digits - pos;
}

// Length of the message that starts at pos; 0 when it needs more data to be whole.
qsizetype messageLength(const QByteArray& buf, qsizetype pos) {
    const Word* w = wordAt(buf, pos);
    if (!w) {
        if (beginsWord(buf, pos))
            return 0;
        return nextStart(buf, pos + 1) - pos; // not a console message: up to the next one
    }
    const qsizetype after = pos + w->text.size();
    switch (w->shape) {
    case Shape::Bare:
        return w->text.size();
    case Shape::Time:
        return after + 9 <= buf.size() ? after + 9 - pos : 0;
    case Shape::Number:
        return numberLength(buf, pos, *w);
    case Shape::ProductList:
        return productListLength(buf, pos, after);
    case Shape::Text:
        return nextStart(buf, after + 1) - pos;
    default:
        return w->text.size();
    }
}

} // namespace

QList<QByteArray> splitConsoleMessages(QByteArray& pending) {
    QList<QByteArray> out;
    qsizetype pos = 0;
    while (pos < pending.size()) {
        qsizetype length = messageLength(pending, pos);
        if (length == 0) {
            if (pending.size() - pos <= MostPending)
                break;
            length = pending.size() - pos; // it will never be finished: let it go
        }
        out.append(pending.mid(pos, length));
        pos += length;
    }
    pending.remove(0, pos);
    return out;
}

} // namespace Protocol
