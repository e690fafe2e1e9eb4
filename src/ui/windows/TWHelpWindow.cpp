#include "ui/windows/TWHelpWindow.h"

#include "ui/parts/TWQtText.h"
#include "ui/parts/TWScrollBox.h"

#include <QEvent>
#include <QFile>
#include <QHBoxLayout>
#include <QPushButton>
#include <QShortcut>

namespace {

constexpr auto IndexPage = "index";

// The preferred size, in characters and lines of text.
constexpr int PageWidth = 90;
constexpr int PageHeight = 36;

constexpr int PageMargin = 18;
constexpr auto PageStyle = "p, li { line-height: 125%; } li { margin-bottom: 4px; } h2 { margin-top: 20px; }";

QPushButton* pageButton(const QString& text, const QString& objectName, const QString& name)
{
    auto* button = new QPushButton(text);
    button->setObjectName(objectName);
    button->setAccessibleName(name);
    return button;
}

QString pagePath(const TWBundle& bundle, const std::string& name)
{
    return TWQtText::exact(bundle.resourcePath("help/" + name + ".html"));
}

}

TWHelpWindow::TWHelpWindow(const TWBundle& bundle)
    : bundle_(bundle)
    , browser_(new QTextBrowser)
{
    setObjectName("helpWindow");
    setWindowTitle(TWQtText::exact(bundle.info("CFBundleHelpBookName")));
    browser_->setObjectName("helpTextBrowser");
    browser_->setAccessibleName(tr("Help page"));
    browser_->setOpenExternalLinks(true);
    browser_->document()->setDocumentMargin(PageMargin);
    browser_->document()->setDefaultStyleSheet(PageStyle);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(createButtons());
    layout->addWidget(browser_, 1);
    for (const auto key : { QKeySequence::Close, QKeySequence::Cancel })
        connect(new QShortcut(key, this), &QShortcut::activated, this, &QWidget::close);
    const QSize wanted(PageWidth * fontMetrics().averageCharWidth(), PageHeight * fontMetrics().lineSpacing());
    resize(TWFitToScreen(*this, wanted));
    browser_->setFocus();
}

QWidget* TWHelpWindow::createButtons()
{
    auto* back = pageButton(tr("&Back"), "backPushButton", tr("Back"));
    auto* contents = pageButton(tr("&Contents"), "contentsPushButton", tr("Contents"));
    back->setEnabled(false);
    connect(back, &QPushButton::clicked, browser_, &QTextBrowser::backward);
    connect(browser_, &QTextBrowser::backwardAvailable, back, &QPushButton::setEnabled);
    connect(contents, &QPushButton::clicked, this, [this] { openAnchor(IndexPage); });
    auto* bar = new QWidget;
    auto* layout = new QHBoxLayout(bar);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(back);
    layout->addWidget(contents);
    layout->addStretch();
    return bar;
}

void TWHelpWindow::openAnchor(const std::string& anchor)
{
    const auto wanted = pagePath(bundle_, anchor);
    browser_->setSource(QUrl::fromLocalFile(QFile::exists(wanted) ? wanted : pagePath(bundle_, IndexPage)));
    show();
    raise();
    activateWindow();
}

// Links get their colour from the palette when the page is loaded.
void TWHelpWindow::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange)
        browser_->reload();
}
