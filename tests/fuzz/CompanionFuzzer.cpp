#include "agent/ServiceTarget.h"
#include "agent/systemd/LaunchctlCommand.h"
#include "tests/agent/PropertyListSamples.h"
#include "tests/fuzz/Fuzz.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <unistd.h>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

constexpr int wrongUsage = 64;
constexpr int wrongDomain = 125;

/// A folder to be in, with an agent of every kind that the command line may name, and no service
/// manager.
class World {
public:
    World() {
        qputenv("HOME", QFile::encodeName(folder_.path()));
        require(folder_.isValid() && QDir::setCurrent(folder_.path()), "there is a folder");
        write(u"good"_s, agentPropertyList("<key>Program</key><string>/bin/true</string>"));
        write(u"bad"_s, "<plist/>");
        require(QDir().mkdir(u"folder"_s), "a folder can be made");
    }

    [[nodiscard]] const UserManager& manager() const { return manager_; }

private:
    static void write(const QString& name, const QByteArray& bytes) {
        QFile file(name);
        require(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(), "a file");
    }

    QTemporaryDir folder_;
    UserManager manager_{u"no-systemctl"_s, folder_.path()};
};

/// Nothing outside of the folder is opened: not every device likes that.
bool leadsOut(const QStringList& arguments) {
    return arguments.value(0) == u"bootstrap" && arguments.value(2).contains(u'/');
}

int expectedUsageCode(const QStringList& arguments) {
    const QString verb = arguments.value(0);
    const QString domain = u"gui/"_s + QString::number(getuid());
    if (verb == u"print" && arguments.size() == 2) {
        return arguments.at(1).startsWith(domain + u'/') ? 0 : wrongDomain;
    }
    if (verb == u"kickstart" && arguments.size() == 3 && arguments.at(1) == u"-k") {
        return arguments.at(2).startsWith(domain + u'/') ? 0 : wrongDomain;
    }
    if (verb == u"bootstrap" && arguments.size() == 3) {
        return arguments.at(1) == domain ? 0 : wrongDomain;
    }
    return wrongUsage;
}

} // namespace

} // namespace vesk

/// The arguments, of which "UID" is the user's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vesk;
    static const World world;
    QStringList arguments;
    const QByteArrayList fields = inputFields(inputBytes(data, size));
    for (const QByteArray& field : fields) {
        // As an argument comes: up to its null.
        arguments +=
            QString::fromUtf8(field.constData()).replace(u"UID"_s, QString::number(getuid()));
    }
    if (leadsOut(arguments)) {
        return -1;
    }
    const ToolResult result = performLaunchctl(arguments, world.manager());
    const auto* failure = std::get_if<ServiceError>(&result);
    require(failure != nullptr, "nothing succeeds without a service manager");
    require(!failure->description.isEmpty(), "a failure says something");
    const int expected = expectedUsageCode(arguments);
    require(failure->code > 0, "a failure has a code");
    require(expected == 0 || failure->code == expected, "wrong usage has its code");
    require(expected != 0 || failure->code != wrongUsage, "right usage has another");
    return 0;
}
