#include "store/settings_file.h"

#include "base/text.h"

#include <QFile>
#include <QTextStream>

#include <cmath>

int SettingsFile::loadNofpc(const AppFolder& folder) {
    const QString path = folder.file(QString::fromLatin1(FileName));
    QFile file(path);
    if (!file.exists()) {
        if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
            throw SettingsError(QStringLiteral("The settings file %1 cannot be created: %2")
                                    .arg(path, file.errorString())
                                    .toStdString());
        const QByteArray lines = "24=NOFPC\n1=PAGE\nPlease don't Modify....\n";
        if (file.write(lines) != lines.size() || !file.flush())
            throw SettingsError(QStringLiteral("The settings file %1 cannot be written: %2")
                                    .arg(path, file.errorString())
                                    .toStdString());
        file.close();
    }
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        throw SettingsError(QStringLiteral("The settings file %1 cannot be read: %2")
                                .arg(path, file.errorString())
                                .toStdString());

    double value = DefaultTerminals;
    QTextStream in(&file);
    while (!in.atEnd()) {
        const QString line = in.readLine();
        // The key must stand after at least one character: the value comes first.
        const qsizetype at = line.indexOf(QLatin1String("=NOFPC"));
        if (at >= 1)
            value = leadingNumber(line.left(at));
    }
    const double rounded = std::nearbyint(value);
    if (rounded < 0 || rounded > MostTerminals)
        throw SettingsError(QStringLiteral("%1 sets %2 terminals (=NOFPC); the console serves "
                                           "0 to %3. Correct the file and start again.")
                                .arg(path, QString::number(value))
                                .arg(MostTerminals)
                                .toStdString());
    return int(rounded);
}
