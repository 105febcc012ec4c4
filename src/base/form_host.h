#pragma once

class QWidget;

// The one place a window is shown: modal or modeless, centred horizontally on the frame
// and 100 twips from its top. Tests show modal windows without waiting on them.
class FormHost {
public:
    virtual ~FormHost() = default;
    // Takes ownership of `form`.
    virtual void showForm(QWidget* form, bool modal) = 0;
};
