#pragma once

#include "billing/rates.h"

#include <QString>
#include <QStringList>

class Prompts;

// The rates window's three texts as typed, and the promo chosen in its list.
struct RatesInput {
    QString ratePerHour;    // txtrph
    QString minimumAmount;  // txtmina
    QString minimumMinutes; // cmbMtime
    int promo = -1;         // cmdpromos' index; -1 when none is chosen
};

// What the window shows of a promo: its amount "##0.#0", its range and its type.
struct PromoFields {
    QString amount;
    QString range;
    QString type;
};

// The rates window without the window: what it opens with, what a promo choice shows,
// and applying the operator's settings.
class RatesSettings {
public:
    RatesSettings(Rates& rates, const Database& database, Prompts& prompts);

    // The values in force as the window shows them, with the promo in force chosen.
    RatesInput current() const;
    // The minutes the window offers; any other number may be typed.
    static QStringList minuteChoices();
    // The details of every promo entry, the built-in entry first.
    QStringList promoNames() const;
    // Empty texts for an index outside the list.
    PromoFields promoFields(int index) const;

    // Writes the three numbers into the rates row (adding the row when the table has
    // none), puts them in force, reads the services list again, takes the chosen promo
    // and tells the operator it is done. Refused before anything is written when a text
    // holds an apostrophe or a number too large to keep; a database failure is told and
    // changes nothing. True when applied.
    bool apply(const RatesInput& input);

    // "Updated": the box that closes a successful apply.
    static QString updatedText();

private:
    Rates& rates_;
    const Database& database_;
    Prompts& prompts_;
};
