#pragma once

#include "platform/TWBundle.h"

#include <QTextBrowser>

// The help pages, which are in the resources' folder "help". The window has no parent, so that it can be read beside a
// sheet.
class TWHelpWindow final : public QWidget {
    Q_OBJECT

public:
    explicit TWHelpWindow(const TWBundle&);

    // Brings the page of that name to the front, or the list of all pages if there is none of that name.
    void openAnchor(const std::string& anchor);

protected:
    void changeEvent(QEvent*) override;

private:
    QWidget* createButtons();

    const TWBundle& bundle_;
    QTextBrowser* browser_;
};
