#include "ui/parts/TWApplicationList.h"

#include "ui/parts/TWQtText.h"

#include <QAbstractListModel>
#include <QIcon>
#include <QPainter>
#include <QStyle>

#include <algorithm>
#include <filesystem>
#include <map>

namespace {

constexpr int FewestRows = 4;
constexpr int RowPadding = 8;

// Reads only regular files, because a description may name anything.
QIcon load(const std::string& name, const QStyle& style)
{
    QIcon icon;
    std::error_code error;
    if (!name.starts_with('/'))
        icon = QIcon::fromTheme(TWQtText::exact(name));
    else if (std::filesystem::is_regular_file(name, error))
        icon = QIcon(TWQtText::path(name));
    if (icon.isNull() || icon.pixmap(1).isNull())
        icon = QIcon::fromTheme("application-x-executable", style.standardIcon(QStyle::SP_FileIcon));
    return icon;
}

}

class TWApplicationModel final : public QAbstractListModel {
public:
    explicit TWApplicationModel(QListView* view)
        : QAbstractListModel(view)
        , view_(*view)
    {
    }

    void setApplications(std::vector<TWApplication> applications)
    {
        beginResetModel();
        all_ = std::move(applications);
        shown_.clear();
        icons_.clear();
        names_.clear();
        for (const auto& each : all_)
            ++names_[each.displayName];
        endResetModel();
    }

    void search(const QString& text)
    {
        const auto matches
            = [&](const std::string& name) { return TWQtText::shown(name).contains(text, Qt::CaseInsensitive); };
        beginResetModel();
        shown_.clear();
        for (std::size_t each = 0; each < all_.size(); ++each) {
            const auto& application = all_[each];
            if (matches(application.displayName) || matches(application.name) || matches(application.executable))
                shown_.push_back(each);
        }
        endResetModel();
    }

    const TWApplication& application(int row) const { return all_[shown_[static_cast<std::size_t>(row)]]; }

    // -1 if it is not shown.
    int rowOf(const TWApplication& application) const
    {
        const auto found
            = std::find_if(shown_.begin(), shown_.end(), [&](auto each) { return all_[each] == application; });
        return found == shown_.end() ? -1 : static_cast<int>(found - shown_.begin());
    }

    int rowCount(const QModelIndex& parent = {}) const override
    {
        return parent.isValid() ? 0 : static_cast<int>(shown_.size());
    }

    QVariant data(const QModelIndex& index, int role) const override
    {
        if (!index.isValid() || index.row() >= rowCount())
            return {};
        switch (role) {
        case Qt::DisplayRole:
            return title(application(index.row()));
        case Qt::ToolTipRole:
            return TWQtText::toolTip(application(index.row()).path);
        case Qt::DecorationRole:
            return icon(shown_[static_cast<std::size_t>(index.row())]);
        default:
            return {};
        }
    }

private:
    // Those of the same name are told apart.
    QString title(const TWApplication& application) const
    {
        auto name = TWQtText::shown(application.displayName);
        if (names_.at(application.displayName) == 1)
            return name;
        return name + " (" + TWQtText::shown(application.identifier) + ')';
    }

    const QIcon& icon(std::size_t number) const
    {
        const auto loaded = icons_.find(number);
        return loaded != icons_.end() ? loaded->second
                                      : icons_.emplace(number, load(all_[number].icon, *view_.style())).first->second;
    }

    const QListView& view_;
    std::vector<TWApplication> all_;
    std::vector<std::size_t> shown_; // indexes
    std::map<std::string, int> names_; // how many have that name
    mutable std::map<std::size_t, QIcon> icons_; // those that were seen, by index
};

TWApplicationList::TWApplicationList(QWidget* parent)
    : QListView(parent)
    , model_(new TWApplicationModel(this))
{
    setModel(model_);
    const int size = style()->pixelMetric(QStyle::PM_LargeIconSize);
    setIconSize({ size, size });
    setSpacing(RowPadding / 4);
    setUniformItemSizes(true);
    setTextElideMode(Qt::ElideMiddle);
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, &TWApplicationList::selectedChanged);
}

void TWApplicationList::setApplications(std::vector<TWApplication> applications)
{
    model_->setApplications(std::move(applications));
    set_ = true;
}

void TWApplicationList::search(const QString& text)
{
    const auto before = selected();
    model_->search(text);
    int row = before ? model_->rowOf(*before) : -1;
    if (row == -1 && !text.isEmpty())
        row = 0;
    if (row != -1)
        setCurrentIndex(model_->index(row));
    setEmptyText(emptyText_);
    emit selectedChanged(); // a reset sends no signal of its own
}

std::optional<TWApplication> TWApplicationList::selected() const
{
    const auto rows = selectionModel()->selectedRows();
    return rows.isEmpty() ? std::nullopt : std::optional(model_->application(rows.first().row()));
}

void TWApplicationList::setEmptyText(const QString& text)
{
    emptyText_ = text;
    setAccessibleDescription(model_->rowCount() == 0 ? emptyText_ : QString());
    viewport()->update();
}

QSize TWApplicationList::sizeHint() const
{
    return { QListView::sizeHint().width(), FewestRows * (iconSize().height() + RowPadding) };
}

void TWApplicationList::paintEvent(QPaintEvent* event)
{
    QListView::paintEvent(event);
    if (model_->rowCount() != 0)
        return;
    QPainter painter(viewport());
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(viewport()->rect(), Qt::AlignCenter | Qt::TextWordWrap, emptyText_);
}
