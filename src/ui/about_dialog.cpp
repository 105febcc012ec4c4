#include "ui/about_dialog.h"

#include "base/form_host.h"
#include "console/console.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QPlainTextEdit>
#include <QSysInfo>
#include <QVBoxLayout>

AboutDialog::AboutDialog(const QString& dataFolder, QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmAbout"));
    setWindowTitle(QStringLiteral("What is Tarvo?"));

    auto* title = new QLabel(QStringLiteral("Tarvo QRB"), this);
    title->setObjectName(QStringLiteral("lblTitle"));
    QFont big = title->font();
    big.setPointSizeF(big.pointSizeF() * 1.8);
    big.setBold(true);
    title->setFont(big);

    auto* version =
        new QLabel(QStringLiteral("Version %1").arg(QStringLiteral(TARVO_VERSION)), this);
    version->setObjectName(QStringLiteral("lblVersion"));

    auto* purpose =
        new QLabel(QStringLiteral("The operator's console of an internet café: it times "
                                  "and bills the sessions on the café's PCs."),
                   this);
    purpose->setWordWrap(true);

    auto* system = new QPlainTextEdit(systemInformation(dataFolder), this);
    system->setObjectName(QStringLiteral("txtSysInfo"));
    system->setReadOnly(true);
    system->setMinimumSize(420, 150);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    buttons->setObjectName(QStringLiteral("cmdOK"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(title);
    layout->addWidget(version);
    layout->addWidget(purpose);
    layout->addWidget(new QLabel(QStringLiteral("System information:"), this));
    layout->addWidget(system);
    layout->addWidget(buttons);
}

QString AboutDialog::systemInformation(const QString& dataFolder) {
    const QStringList lines = {
        QStringLiteral("Operating system: ") + QSysInfo::prettyProductName(),
        QStringLiteral("Kernel: ") + QSysInfo::kernelType() + QLatin1Char(' ') +
            QSysInfo::kernelVersion(),
        QStringLiteral("CPU architecture: ") + QSysInfo::currentCpuArchitecture(),
        QStringLiteral("Host name: ") + QSysInfo::machineHostName(),
        QStringLiteral("Qt version: ") + QString::fromLatin1(qVersion()),
        QStringLiteral("Data folder: ") + dataFolder,
    };
    return lines.join(QLatin1Char('\n'));
}

void openAbout(Console& console, FormHost& host) {
    auto* about = new AboutDialog(console.folder().path());
    about->setAttribute(Qt::WA_DeleteOnClose);
    host.showForm(about, true);
}
