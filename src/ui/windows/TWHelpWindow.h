#pragma once

#include "platform/TWBundle.h"

#include <QTextBrowser>

// Shows the help pages, which are in the resource folder "help". The window has no parent, so that it can be used
// beside a sheet.
class TWHelpWindow final : public QWidget {
    Q_OBJECT

public:
    explicit TWHelpWindow(const TWBundle&);

    // Shows the page with that name in front, or the list of all pages if there is no such page.
    void openAnchor(const std::string& anchor);

protected:
    void changeEvent(QEvent*) override;

private:
    QWidget* createButtons();

    const TWBundle& bundle_;
    QTextBrowser* browser_;
};
