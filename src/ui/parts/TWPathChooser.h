#pragma once

#include <QObject>

#include <functional>
#include <optional>
#include <string>

class QFileDialog;
class QMenu;
class QWidget;

// Lets the user choose a file or a folder: a menu asks which of the two, then a dialog opens.
class TWPathChooser final : public QObject {
    Q_OBJECT

public:
    // The dialog opens as a sheet of the window.
    explicit TWPathChooser(QWidget* window);

    // Adds an entry to the menu, for something else than a file or a folder.
    void addEntry(const QString& title, std::function<void()> chosen);

    struct Texts {
        QString title;
        QString button; // the dialog's button that chooses
    };

    // Opens the menu below the button. Answers the exact bytes of the chosen path, or nothing if none was chosen.
    void choose(const QWidget& button, const Texts&, const std::string& startFolder,
        std::function<void(std::optional<std::string>)>);

    // Opens the dialog for files at once. Otherwise like choose().
    void chooseFile(const Texts&, const std::string& startFolder, std::function<void(std::optional<std::string>)>);

signals:
    // The chosen path is not valid UTF-8, so its exact bytes are unknown; the answer is nothing.
    void unreadableName(const QString& path);

private:
    void openDialog(int fileMode);
    void answer(std::optional<std::string> path);

    QWidget* window_;
    QMenu* menu_;
    QFileDialog* dialog_ = nullptr; // set while it is open
    Texts texts_;
    std::string startFolder_;
    std::function<void(std::optional<std::string>)> chosen_;
};
