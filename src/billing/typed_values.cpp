#include "billing/typed_values.h"

#include "base/prompts.h"
#include "base/text.h"
#include "store/database.h"

#include <cmath>

namespace {

// Far above any rate, price or count of minutes, and far below where money's fixed-point
// units or a 32-bit count would overflow.
constexpr double LargestNumber = 1e9;

const QString NotSavedTitle = QStringLiteral("Not saved");

} // namespace

bool refuseApostrophe(Prompts& prompts, const QString& text) {
    if (!hasQuote(text))
        return false;
    prompts.message(QStringLiteral("\"%1\" holds an apostrophe ( ' ), which the console cannot "
                                   "store. Type it without one.")
                        .arg(text),
                    NotSavedTitle, Prompts::Icon::Exclamation);
    return true;
}

std::optional<double> typedNumber(Prompts& prompts, const QString& text) {
    const double value = leadingNumber(text);
    if (std::isfinite(value) && std::abs(value) <= LargestNumber)
        return value;
    prompts.message(QStringLiteral("\"%1\" is too large a number. Type one of at most %2.")
                        .arg(text, QString::number(LargestNumber, 'f', 0)),
                    NotSavedTitle, Prompts::Icon::Exclamation);
    return std::nullopt;
}

void tellDatabaseFailure(Prompts& prompts, const QString& failed, const StoreError& error) {
    prompts.message(QStringLiteral("%1: %2\nNothing was changed.").arg(failed, error.text()),
                    QStringLiteral("Database error"), Prompts::Icon::Critical);
}
