#pragma once

#include "base/app_folder.h"
#include "base/prompts.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

// Where a billing statement went.
struct StatementOutput {
    enum class Where { Printer, PdfFile, Nowhere };
    Where where = Where::Nowhere;
    QString name; // the printer's name, or the PDF file's path

    bool operator==(const StatementOutput&) const = default;
};

// Prints a billing statement (its lines from statementLines()) of PC `pc`, printed at
// `printedAt`, where the printer set-up in `folder`'s settings file says: the chosen
// printer, or with none chosen the system's default printer, or a PDF file in the chosen
// folder. The operator is first told that it is on its way, without waiting for an
// answer. When the chosen printer is gone, there is no printer at all, or the printer
// refuses the job, the operator is told and the statement is kept as a PDF file all the
// same. Nowhere only when even that file cannot be written; the operator is told why.
StatementOutput printStatement(const QStringList& lines, int pc, const QDateTime& printedAt,
                               const AppFolder& folder, Prompts& prompts);
