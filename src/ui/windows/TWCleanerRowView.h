#pragma once

#include "app/TWCleanerTable.h"
#include "app/TWRunView.h"

#include <QIcon>
#include <QWidget>

#include <array>

class QPushButton;
class TWCheckBox;
class TWIconView;
class TWQuietLabel;
class TWSpinner;

// The icons of the lights, in the order of TWLight.
using TWLightIcons = std::array<QIcon, 5>;

// One cleaner's row in the main window: icon, check box, the line that says what the cleaner would do now, spinner,
// light and, if there is something to edit, the Edit button. The object names of its widgets begin with the cleaner's
// name: "trashCheckBox".
class TWCleanerRowView final : public QWidget {
    Q_OBJECT

public:
    enum class Editable { No, Yes };

    // Pixels between the Edit button and the end of the row, where the frame of a focused button is drawn.
    static constexpr int FocusRoom = 3;

    TWCleanerRowView(const TWCleanerRow&, Editable, const TWLightIcons&, QWidget* parent);

    // Call this once the icons of the lights are loaded. The cleaner's icon comes from the icon theme, or from the
    // folder if the theme has none.
    void showPictures(const QString& fallbackFolder);

    bool isChecked() const;
    void setChecked(bool);
    void setLine(const QString&);
    void showLight(TWLight);
    void startSpinning();
    void stopSpinning();

signals:
    // The user has changed the check box.
    void checked(bool);
    void editRequested();

private:
    void layOut();
    void nameChild(QWidget*, const char* ending, const QString& accessibleName) const;

    const TWCleanerRow& row_;
    const TWLightIcons& lightIcons_;
    TWIconView* icon_;
    TWCheckBox* checkBox_;
    TWQuietLabel* line_;
    TWSpinner* spinner_;
    TWIconView* light_;
    TWLight shownLight_ = TWLight::Off;
    QPushButton* editButton_;
};
