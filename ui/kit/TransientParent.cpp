#include "ui/kit/TransientParent.h"

#include <QWindow>

namespace vesk {

const QWindow& rootTransientParent(const QWindow& window) {
    const QWindow* root = &window;
    while (root->transientParent() != nullptr) {
        root = root->transientParent();
    }
    return *root;
}

} // namespace vesk
