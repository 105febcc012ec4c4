#include "store/report_source.h"

#include "store/database.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QSettings>
#include <QTextStream>

QString ReportSource::setReportConnection(const AppFolder& folder) {
    return QStringLiteral("DSN=MS Access Database;DBQ=TarvoQRBDB.MDB;DefaultDir=") +
           QDir::toNativeSeparators(folder.path()) +
           QStringLiteral(";DriverId=25;FIL=MS Access;MaxBufferSize=2048;PageTimeout=5;"
                          "PWD=TKvelm7342;UID=admin;");
}

QString ReportSource::defaultIniPath() {
    const QString env = qEnvironmentVariable("ODBCINI");
    return env.isEmpty() ? QDir::homePath() + QStringLiteral("/.odbc.ini") : env;
}

bool ReportSource::registerReportDataSource(const AppFolder& folder, const QString& iniPath,
                                            QString* error) {
#ifdef Q_OS_WIN
    Q_UNUSED(iniPath);
    Q_UNUSED(folder);
    QSettings reg(QStringLiteral("HKEY_CURRENT_USER\\Software\\ODBC\\ODBC.INI\\MS Access Database"),
                  QSettings::NativeFormat);
    reg.setValue(QStringLiteral("Driver"),
                 qEnvironmentVariable("windir") + QStringLiteral("\\System32\\odbcjt32.dll"));
    reg.setValue(QStringLiteral("DriverId"), 25);
    reg.setValue(QStringLiteral("FIL"), QStringLiteral("MS Access;"));
    reg.setValue(QStringLiteral("SafeTransaction"), 0);
    reg.setValue(QStringLiteral("UID"), QString());
    reg.sync();
    if (reg.status() != QSettings::NoError) {
        if (error)
            *error = QStringLiteral("The ODBC data source could not be written to the registry.");
        return false;
    }
    return true;
#else
    // Written by hand rather than through QSettings, whose ini format quotes values that
    // hold ";" in a way ODBC managers do not read. The file here is SQLite, so the
    // driver is SQLite's and the file is named where that driver looks for it.
    const QString section = QStringLiteral("[%1]").arg(QLatin1String(DataSourceName));
    const QStringList ours = {
        section,
        QStringLiteral("Driver=SQLite3"),
        QStringLiteral("Database=") + Database(folder).path(),
        QStringLiteral("DriverId=25"),
        QStringLiteral("FIL=MS Access;"),
        QStringLiteral("SafeTransaction=0"),
        QStringLiteral("UID="),
    };

    QStringList kept;
    QFile in(iniPath);
    if (in.open(QIODevice::ReadOnly | QIODevice::Text)) {
        QTextStream s(&in);
        bool inOurs = false;
        while (!s.atEnd()) {
            const QString line = s.readLine();
            const QString t = line.trimmed();
            if (t.startsWith(QLatin1Char('[')))
                inOurs = t.compare(section, Qt::CaseInsensitive) == 0;
            if (!inOurs)
                kept << line;
        }
    }
    while (!kept.isEmpty() && kept.last().trimmed().isEmpty())
        kept.removeLast();
    if (!kept.isEmpty())
        kept << QString();
    kept << ours;

    QSaveFile out(iniPath);
    if (!out.open(QIODevice::WriteOnly | QIODevice::Text)) {
        if (error)
            *error = out.errorString();
        return false;
    }
    out.write((kept.join(QLatin1Char('\n')) + QLatin1Char('\n')).toUtf8());
    if (!out.commit()) {
        if (error)
            *error = out.errorString();
        return false;
    }
    return true;
#endif
}
