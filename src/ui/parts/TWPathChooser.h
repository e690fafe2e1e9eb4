#pragma once

#include <QObject>

#include <functional>
#include <optional>
#include <string>

class QFileDialog;
class QMenu;
class QWidget;

// Lets the user choose one file or folder: a menu asks which of the two it is to be, then a dialog opens.
class TWPathChooser final : public QObject {
    Q_OBJECT

public:
    // The dialog becomes a sheet of that window.
    explicit TWPathChooser(QWidget* window);

    struct Texts {
        QString title;
        QString button; // that chooses
    };

    // The menu opens below the button. Answers the path's exact bytes, or nothing if none was chosen.
    void choose(const QWidget& button, const Texts&, const std::string& startFolder,
        std::function<void(std::optional<std::string>)>);

signals:
    // A path was chosen that has a name that is not valid UTF-8; that is why there is no answer.
    void unreadableName(const QString& path);

private:
    void openDialog(int fileMode);
    void answer(std::optional<std::string> path);

    QWidget* window_;
    QMenu* menu_;
    QFileDialog* dialog_ = nullptr; // while it is open
    Texts texts_;
    std::string startFolder_;
    std::function<void(std::optional<std::string>)> chosen_;
};
