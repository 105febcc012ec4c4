#pragma once

#include <QString>

class QFont;
class QLabel;
class QWidget;

// Small helpers the client's windows share.
namespace ClientWidgets {

// Gives a control its object name, and the names screen readers and automation tools
// use: the accessible name (what it is called on screen) and the object name as
// accessible description.
template <typename W> W* named(W* widget, const QString& objectName, const QString& spokenName) {
    widget->setObjectName(objectName);
    widget->setAccessibleName(spokenName);
    widget->setAccessibleDescription(objectName);
    return widget;
}

// A label in a pixel size and weight; text is read from across the room, so sizes are
// set from the screen's height, not the desktop's font.
QLabel* label(const QString& objectName, const QString& text, QWidget* parent = nullptr);
void setPixelSize(QWidget* widget, int pixels, bool bold = false);

// The colours of the lock screen and the meter.
inline constexpr auto Night = "#0f1d3a";    // background
inline constexpr auto Panel = "#1b2d55";    // panels on it
inline constexpr auto Ink = "#ffffff";      // text
inline constexpr auto Soft = "#c7d3f0";     // secondary text
inline constexpr auto Accent = "#ffd447";   // amounts, headings
inline constexpr auto Alarm = "#d7263d";    // behind the time-nearly-up notice
inline constexpr auto AlarmInk = "#ff8a8a"; // refusals, written on the dark background
inline constexpr auto Good = "#3ddc84";     // accepted, delivered

} // namespace ClientWidgets
