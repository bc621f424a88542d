#pragma once

#include <QDir>
#include <QStringList>

#include <functional>

class QImage;
class QPainter;
class QWidget;

namespace vesk {

/// Takes pictures of screens into a folder, each in single and in double size, and collects what is
/// wrong with them.
class Gallery {
public:
    explicit Gallery(const QDir& folder) : folder_(folder) {}

    /// A window that is shown: its layout is checked too.
    void add(const QString& name, QWidget& window);

    /// A drawing of the given size.
    void add(const QString& name, QSize size, const std::function<void(QPainter&)>& draw);

    /// One line for each fault, with the picture's name.
    [[nodiscard]] const QStringList& faults() const noexcept { return faults_; }
    [[nodiscard]] int pictures() const noexcept { return pictures_; }

private:
    void save(const QString& name, const QImage& image);

    QDir folder_;
    QStringList faults_;
    int pictures_ = 0;
};

/// Whether all of the picture has one colour.
[[nodiscard]] bool isBlank(const QImage& image);

} // namespace vesk
