#pragma once

#include <QString>
#include <QtGlobal>

// The pseudo-random generator of the classic BASIC runtime the console was first written
// for, reconstructed so that a password shows scrambled as it always did.
class BasicRandom {
public:
    // Rnd(number): a negative number reseeds from its single-precision bits and draws;
    // a positive one (or none) draws the next value; zero repeats the last. In [0, 1).
    float rnd(float number = 1.0f);
    // Randomize number: mixes the upper half of the number's double-precision bits into
    // the middle sixteen bits of the seed.
    void randomize(double number);
    quint32 seed() const { return seed_; }

private:
    quint32 seed_ = 0x50000; // the runtime's seed at start
};

// A symmetric stream scrambler: applied twice with the same key it gives back the text.
// Characters are taken as single bytes of the Windows code page; a character outside it
// scrambles as "?".
QString scrambleText(const QString& text, const QString& key);
