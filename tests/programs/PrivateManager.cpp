#include "tests/programs/PrivateManager.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <csignal>

#include <sys/prctl.h>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 30'000;

} // namespace

PrivateManager::PrivateManager(const QString& home) : home_(home) {
    const QString generator = QStringLiteral(VESK_GENERATOR);
    if (!QDir(folder_.path()).mkdir(u"generators"_s)
        || !QFile::link(
            generator, folder_.filePath(u"generators/"_s + QFileInfo(generator).fileName()))) {
        qFatal("no folder for the generator");
    }
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(folder_.filePath(u"run"_s)));
    process_.setProcessChannelMode(QProcess::MergedChannels);
    process_.setStandardOutputFile(folder_.filePath(u"log"_s), QIODevice::Append);
    process_.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGTERM); });
}

PrivateManager::~PrivateManager() {
    stop();
    qunsetenv("XDG_RUNTIME_DIR");
}

bool PrivateManager::start() {
    process_.start(
        QStringLiteral(VESK_MANAGER),
        {folder_.filePath(u"run"_s), home_, folder_.filePath(u"generators"_s)});
    const auto isUp = [] { return systemctl({u"is-active"_s, u"default.target"_s}) == "active\n"; };
    return QTest::qWaitFor(
               [&] { return process_.state() == QProcess::NotRunning || isUp(); }, patience)
           && process_.state() == QProcess::Running;
}

void PrivateManager::stop() {
    process_.terminate();
    if (!process_.waitForFinished(patience)) {
        process_.kill();
        process_.waitForFinished(patience);
    }
}

QByteArray PrivateManager::log() const {
    QFile file(folder_.filePath(u"log"_s));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QByteArray PrivateManager::systemctl(const QStringList& arguments) {
    QProcess process;
    process.start(u"systemctl"_s, QStringList{u"--user"_s} + arguments);
    process.waitForFinished(patience);
    return process.readAllStandardOutput();
}

} // namespace vesk
