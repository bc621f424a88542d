#pragma once

#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

namespace vesk {

/// A shell script in a folder of its own that stands in for the service manager's tool. It notes
/// the arguments of each run, one run a line, before it does what `body` says.
class ScriptedTool {
public:
    explicit ScriptedTool(const QByteArray& body) {
        QFile script(path());
        if (script.open(QIODevice::WriteOnly)) {
            script.write("#!/bin/sh\ncd '" + QFile::encodeName(folder_.path()) + "'\n");
            script.write(
                "await() { while [ -e calls ] && [ ! -e \"$1\" ]; do sleep 0.01; done; }\n");
            script.write("echo \"$*\" >> calls\n" + body + "\n");
        }
        script.setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    }

    [[nodiscard]] QString path() const { return folder_.filePath(QStringLiteral("tool")); }

    [[nodiscard]] QString file(const QString& name) const { return folder_.filePath(name); }

    [[nodiscard]] QByteArray content(const QString& name) const {
        QFile read(file(name));
        return read.open(QIODevice::ReadOnly) ? read.readAll() : QByteArray();
    }

    /// The arguments of every run so far.
    [[nodiscard]] QStringList calls() const {
        const QString text = QString::fromUtf8(content(QStringLiteral("calls")));
        return text.split(u'\n', Qt::SkipEmptyParts);
    }

    /// Lets a script go on that waits in `await NAME`. All go on when the folder is gone.
    void touch(const QString& name) const {
        QFile mark(file(name));
        if (!mark.open(QIODevice::WriteOnly)) {
            qFatal("no mark could be made");
        }
    }

private:
    QTemporaryDir folder_;
};

} // namespace vesk
