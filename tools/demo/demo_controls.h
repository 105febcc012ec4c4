#pragma once

#include <QAbstractItemView>
#include <QComboBox>
#include <QCoreApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QWidget>

// How the demo's operator works the console's controls: by object name, with keys where
// a window reacts to keys and not to its text being set.
namespace DemoControls {

// The control of board tile `tile`: every tile has the same names.
template <typename T> T* tileControl(QWidget* board, const char* name, int tile) {
    for (T* w : board->findChildren<T*>(QString::fromLatin1(name)))
        if (w->property("tile").toInt() == tile)
            return w;
    return nullptr;
}

// The dialog of that name that is up now, if any.
inline QDialog* shownDialog(QWidget* frame, const QString& name) {
    for (auto* d : frame->findChildren<QDialog*>(name))
        if (d->isVisible())
            return d;
    return nullptr;
}

inline void pressKey(QWidget* w, int key, const QString& text = QString()) {
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(w, &press);
    QKeyEvent release(QEvent::KeyRelease, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(w, &release);
}

// Typed key by key: searches that follow every key see each one.
inline void typeKeys(QWidget* field, const QString& text) {
    for (const QChar c : text)
        pressKey(field, c.toUpper().unicode(), QString(c));
}

// An entry chosen from a drop-down list the way the keyboard does it: the list opened,
// the entry highlighted, Return. Only a choice made in the list counts as picked.
inline void pickFromList(QComboBox* combo, int row) {
    combo->showPopup();
    QAbstractItemView* list = combo->view();
    list->setCurrentIndex(list->model()->index(row, 0));
    pressKey(list, Qt::Key_Return);
}

// Events handled until `done` holds or `ms` of real time passed; whether it held.
template <typename F> bool waitFor(F done, int ms) {
    QElapsedTimer waited;
    waited.start();
    while (!done() && waited.elapsed() < ms)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    return done();
}

} // namespace DemoControls
