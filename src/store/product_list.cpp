#include "store/product_list.h"

#include <QFile>
#include <QTextStream>

QString ProductList::listText(const AppFolder& folder) {
    QFile file(folder.file(QString::fromLatin1(FileName)));
    if (!file.exists() || !file.open(QIODevice::ReadOnly | QIODevice::Text))
        return QStringLiteral("None @ 0.00;End");
    QString list;
    QTextStream in(&file);
    while (!in.atEnd())
        list += in.readLine() + QLatin1Char(';');
    return list + QStringLiteral("End");
}
