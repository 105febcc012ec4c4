#include "store/product_list.h"

#include "base/text.h"

#include <QFile>

QString ProductList::listText(const AppFolder& folder) {
    QFile file(folder.file(QString::fromLatin1(FileName)));
    if (!file.exists() || !file.open(QIODevice::ReadOnly))
        return QStringLiteral("None @ 0.00;End");
    // A list written on a Windows PC is in its code page, not UTF-8.
    QStringList lines = decodeText(file.readAll()).split(QLatin1Char('\n'));
    if (lines.last().isEmpty())
        lines.removeLast(); // the file ends with a line break, or is empty
    QString list;
    for (QString& line : lines) {
        if (line.endsWith(QLatin1Char('\r')))
            line.chop(1);
        list += line + QLatin1Char(';');
    }
    return list + QStringLiteral("End");
}
