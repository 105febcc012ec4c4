#pragma once

#include "base/money.h"

#include <QDateTime>
#include <QString>

// Number masks in the console's notation: "#" an optional digit, "0" a digit always
// shown, "," thousands grouping, "." the decimal point written as it stands (even with
// no decimals after it), anything before the first placeholder a literal prefix.
// Rounds half away from zero to the mask's decimal places.
//   formatNumber(15, "##,###.#0") == "15.00"   formatNumber(0.5, "##,###.#0") == ".50"
//   formatNumber(20, "###.##") == "20."         formatNumber(12, "000000") == "000012"
QString formatNumber(double value, const QString& mask);
QString formatNumber(Money value, const QString& mask);

// Date and time masks: "DDDD" weekday name, "MMMM" month name, "YYYY"/"YY" year, "DD"
// day, "MM" month (minutes when it follows "HH"), "HH" hour of the day, "SS" seconds;
// letter case does not matter and every other character stands as it is. Names are
// English whatever the machine's locale, as printed on statements and logs.
QString formatDateTime(const QDateTime& when, const QString& mask);
QString formatDate(const QDate& day, const QString& mask);
QString formatTime(const QTime& time, const QString& mask);

// Running time in milliseconds as "hh:mm:ss"; negative or sub-second times read as zero
// and hours are not wrapped into days.
QString formatElapsed(qint32 milliseconds);
