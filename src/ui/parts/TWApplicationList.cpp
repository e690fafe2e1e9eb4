#include "ui/parts/TWApplicationList.h"

#include "ui/parts/TWApplicationIcons.h"
#include "ui/parts/TWQtText.h"

#include <QAbstractListModel>
#include <QPainter>
#include <QStyle>

#include <algorithm>
#include <map>

namespace {

constexpr int FewestRows = 4;
constexpr int RowPadding = 8;

}

class TWApplicationModel final : public QAbstractListModel {
public:
    explicit TWApplicationModel(QListView* view)
        : QAbstractListModel(view)
        , icons_(*view)
    {
    }

    void setApplications(std::vector<TWApplication> applications)
    {
        beginResetModel();
        all_ = std::move(applications);
        shown_.clear();
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
            return icons_.icon(application(index.row()).icon);
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

    const TWApplicationIcons icons_;
    std::vector<TWApplication> all_;
    std::vector<std::size_t> shown_; // indexes
    std::map<std::string, int> names_; // how many have that name
};

TWApplicationList::TWApplicationList(SelectionMode mode, QWidget* parent)
    : QListView(parent)
    , model_(new TWApplicationModel(this))
{
    setModel(model_);
    setSelectionMode(mode);
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
    std::vector<int> rows;
    rows.reserve(before.size() + 1);
    for (const auto& each : before)
        rows.push_back(model_->rowOf(each));
    std::erase(rows, -1);
    if (rows.empty() && !text.isEmpty() && model_->rowCount() > 0)
        rows.push_back(0);
    for (const int row : rows) {
        if (row == rows.front())
            setCurrentIndex(model_->index(row));
        selectionModel()->select(model_->index(row), QItemSelectionModel::Select);
    }
    setEmptyText(emptyText_);
    emit selectedChanged(); // a reset sends no signal of its own
}

std::vector<TWApplication> TWApplicationList::selected() const
{
    auto rows = selectionModel()->selectedRows();
    std::sort(rows.begin(), rows.end());
    std::vector<TWApplication> selected;
    for (const auto& row : rows)
        selected.push_back(model_->application(row.row()));
    return selected;
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
