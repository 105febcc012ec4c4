#pragma once

#include <QByteArrayView>
#include <QString>
#include <QtGlobal>

// The leading number of a text: blanks anywhere are skipped, then an optional sign,
// digits and one decimal point; reading stops at the first other character.
// So "1,234.50" reads 1, " 125.00" reads 125 and "" reads 0.
double leadingNumber(const QString& text);

// 1-based position of the single character ch in text, 0 when absent.
qint16 findChar(const QString& ch, const QString& text);

// The PC number of a text such as "Pc Number 3 is not logged :3": the number after the
// first ":", or 0 when there is none or it is not a whole number from 1 to 255.
int numberAfterColon(const QString& text);

// Text from a terminal or a file written on one: UTF-8 when the bytes are valid UTF-8,
// else Windows-1252, the code page of the café's Windows PCs ("PE\xd1A" reads "PEÑA").
QString decodeText(QByteArrayView bytes);
