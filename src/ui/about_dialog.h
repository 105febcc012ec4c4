#pragma once

#include <QDialog>

class Console;
class FormHost;

// "What is Tarvo?": the program, its version, and the machine it runs on.
class AboutDialog : public QDialog {
    Q_OBJECT
public:
    explicit AboutDialog(const QString& dataFolder, QWidget* parent = nullptr);

    // The machine's system information as "name: value" lines.
    static QString systemInformation(const QString& dataFolder);
};

void openAbout(Console& console, FormHost& host);
