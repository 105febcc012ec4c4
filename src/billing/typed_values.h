#pragma once

#include <QString>

#include <optional>

class Prompts;
struct StoreError;

// What the settings windows refuse before anything reaches the database, and how a
// failed write is told. Each tells the operator itself.

// True (and told) when `text` holds an apostrophe, which the console's statements never
// take in a typed value.
bool refuseApostrophe(Prompts& prompts, const QString& text);

// The leading number of a typed text; none (and told) when it is larger than any amount
// or count the console keeps.
std::optional<double> typedNumber(Prompts& prompts, const QString& text);

// "<failed>: <reason>", with the note that nothing changed.
void tellDatabaseFailure(Prompts& prompts, const QString& failed, const StoreError& error);
