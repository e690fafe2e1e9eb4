#include "ui/windows/TWCleanerRowView.h"

#include "ui/parts/TWCheckBox.h"
#include "ui/parts/TWIconView.h"
#include "ui/parts/TWQuietLabel.h"
#include "ui/parts/TWSpinner.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QStyle>

namespace {

constexpr int IconSize = 32;
constexpr int LightSize = 20;

// The accessible names and tooltips of the lights, in the order of TWLight.
constexpr const char* LightNames[] = {
    QT_TRANSLATE_NOOP("TWCleanerRowView", "Not run"),
    QT_TRANSLATE_NOOP("TWCleanerRowView", "Running"),
    QT_TRANSLATE_NOOP("TWCleanerRowView", "Succeeded"),
    QT_TRANSLATE_NOOP("TWCleanerRowView", "Failed"),
    QT_TRANSLATE_NOOP("TWCleanerRowView", "Stopped"),
};

// The letters to press with Alt, in the order of the rows. Menus and buttons use none of them.
constexpr QLatin1String Mnemonics("artoligs");

QString withMnemonic(const TWCleanerRow& row)
{
    auto title = QString::fromUtf8(row.title);
    const auto letter = Mnemonics.at(TWCleanerPosition(row.name));
    return title.insert(std::max<qsizetype>(title.indexOf(letter, 0, Qt::CaseInsensitive), 0), '&');
}

}

TWCleanerRowView::TWCleanerRowView(
    const TWCleanerRow& row, Editable editable, const TWLightIcons& lightIcons, QWidget* parent)
    : QWidget(parent)
    , row_(row)
    , lightIcons_(lightIcons)
    , icon_(new TWIconView(IconSize, this))
    , checkBox_(new TWCheckBox(withMnemonic(row), this))
    , line_(new TWQuietLabel(this))
    , spinner_(new TWSpinner(LightSize, this))
    , light_(new TWIconView(LightSize, this))
    , editButton_(new QPushButton(tr("Edit..."), this))
{
    const auto title = QString::fromUtf8(row.title);
    nameChild(icon_, "Icon", "");
    nameChild(checkBox_, "CheckBox", title);
    nameChild(line_, "QuietLabel", "");
    nameChild(spinner_, "Spinner", tr("%1 is running").arg(title));
    nameChild(light_, "Light", "");
    nameChild(editButton_, "EditButton", tr("Edit %1").arg(title));

    auto policy = editButton_->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    editButton_->setSizePolicy(policy);
    editButton_->setVisible(editable == Editable::Yes);
    icon_->setEnabled(row.available);
    checkBox_->setEnabled(row.available);
    layOut();
    showLight(TWLight::Off);
    connect(checkBox_, &QCheckBox::clicked, this, &TWCleanerRowView::checked);
    connect(editButton_, &QPushButton::clicked, this, &TWCleanerRowView::editRequested);
}

// The line is aligned with the check box's text.
void TWCleanerRowView::layOut()
{
    auto* lineLayout = new QHBoxLayout;
    lineLayout->addSpacing(style()->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, checkBox_)
        + style()->pixelMetric(QStyle::PM_CheckBoxLabelSpacing, nullptr, checkBox_));
    lineLayout->addWidget(line_);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(1);
    texts->addWidget(checkBox_);
    texts->addLayout(lineLayout);

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, FocusRoom, 0);
    layout->setSpacing(10);
    layout->addWidget(icon_);
    layout->addLayout(texts, 1);
    layout->addWidget(spinner_);
    layout->addWidget(light_);
    layout->addWidget(editButton_);
}

void TWCleanerRowView::nameChild(QWidget* child, const char* ending, const QString& accessibleName) const
{
    child->setObjectName(QLatin1String(row_.name) + QLatin1String(ending));
    child->setAccessibleName(accessibleName);
}

void TWCleanerRowView::showPictures(const QString& fallbackFolder)
{
    const auto name = QLatin1String(row_.icon);
    icon_->setIcon(QIcon::fromTheme(name, QIcon(fallbackFolder + '/' + name + ".svg")));
    showLight(shownLight_);
}

bool TWCleanerRowView::isChecked() const
{
    return checkBox_->checkState() == Qt::Checked;
}

void TWCleanerRowView::setChecked(bool checked)
{
    checkBox_->setChecked(checked);
}

// Makes a screen reader read the line together with the check box.
void TWCleanerRowView::setLine(const QString& line)
{
    line_->setText(line);
    checkBox_->setAccessibleDescription(line);
}

void TWCleanerRowView::showLight(TWLight light)
{
    shownLight_ = light;
    const auto index = static_cast<std::size_t>(light);
    const auto name = tr(LightNames[index]);
    light_->setIcon(lightIcons_[index]);
    light_->setAccessibleName(name);
    light_->setAccessibleDescription(QString::fromUtf8(row_.title));
    light_->setToolTip(name);
}

void TWCleanerRowView::startSpinning()
{
    spinner_->start();
}

void TWCleanerRowView::stopSpinning()
{
    spinner_->stop();
}
