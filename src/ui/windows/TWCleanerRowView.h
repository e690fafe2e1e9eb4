#pragma once

#include "app/TWCleanerTable.h"
#include "app/TWRunView.h"

#include <QIcon>
#include <QWidget>

#include <array>

class QCheckBox;
class QPushButton;
class TWIconView;
class TWQuietLabel;
class TWSpinner;

// The pictures of the lights, by TWLight.
using TWLightIcons = std::array<QIcon, 4>;

// One cleaner's row in the main window: icon, check box, the quiet line that says what the cleaner will do now,
// spinner, light and, where there is something to edit, the Edit button. Child widgets are named after the cleaner,
// "trashCheckBox".
class TWCleanerRowView final : public QWidget {
    Q_OBJECT

public:
    enum class Editable { No, Yes };

    TWCleanerRowView(const TWCleanerRow&, Editable, const TWLightIcons&, QWidget* parent);

    // Once there are pictures of the lights. The cleaner's icon is that of the theme, or else our own in the folder.
    void showPictures(const QString& fallbackFolder);

    bool isChecked() const;
    void setChecked(bool);
    void setLine(const QString&);
    void showLight(TWLight);
    void startSpinning();
    void stopSpinning();

signals:
    // The user has clicked the check box.
    void checked(bool);
    void editRequested();

private:
    void nameChild(QWidget*, const char* ending, const QString& accessibleName);

    const TWCleanerRow& row_;
    const TWLightIcons& lightIcons_;
    TWIconView* icon_;
    QCheckBox* checkBox_;
    TWQuietLabel* line_;
    TWSpinner* spinner_;
    TWIconView* light_;
    TWLight shownLight_ = TWLight::Off;
    QPushButton* editButton_;
};
