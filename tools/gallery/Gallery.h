#pragma once

#include <QDir>
#include <QString>
#include <QStringList>

#include <functional>
#include <utility>

class QImage;
class QPainter;
class QWidget;

namespace vesk {

/// Letters other than the system's own.
struct Lettering {
    QString family; ///< the system's own when empty
    int percent = 100;
};

/// Takes pictures of screens into a folder, each in single and in double size, or where the screen
/// itself is scaled in its size, and collects what is wrong with them.
class Gallery {
public:
    explicit Gallery(const QDir& folder, Lettering lettering = {})
        : folder_(folder), lettering_(std::move(lettering)) {}

    /// A window that is shown: its layout and the contrast of all that is drawn are checked too.
    void add(const QString& name, QWidget& window);

    /// A drawing of the given size.
    void add(const QString& name, QSize size, const std::function<void(QPainter&)>& draw);

    /// One line for each fault, with the picture's name.
    [[nodiscard]] const QStringList& faults() const noexcept { return faults_; }
    [[nodiscard]] int pictures() const noexcept { return pictures_; }

private:
    void letter(QWidget& window) const;
    void save(const QString& name, const QImage& image);

    QDir folder_;
    Lettering lettering_;
    QStringList faults_;
    int pictures_ = 0;
};

/// Whether all of the picture has one colour.
[[nodiscard]] bool isBlank(const QImage& image);

} // namespace vesk
