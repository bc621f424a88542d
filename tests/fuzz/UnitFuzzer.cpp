#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/UnitReader.h"

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

/// Takes the fields one by one; there are empty ones at the end.
class Fields {
public:
    explicit Fields(const QByteArray& input) : fields_(inputFields(input)) {}

    QString text() {
        return fields_.isEmpty() ? QString() : QString::fromUtf8(fields_.takeFirst());
    }

    [[nodiscard]] bool atEnd() const { return fields_.isEmpty(); }

private:
    QByteArrayList fields_;
};

QVariant keepAlive(unsigned flags) {
    return (flags & 2U) != 0 ? QVariant(QVariantMap{{u"SuccessfulExit"_s, (flags & 4U) != 0}})
                             : QVariant((flags & 4U) != 0);
}

/// The keys' values in the order of the fields, then the number of variables that `flags` says, and
/// arguments to the end.
QVariantMap propertyListOf(unsigned flags, Fields fields) {
    QVariantMap list{{u"Label"_s, u"label"_s}, {u"KeepAlive"_s, keepAlive(flags)}};
    for (const auto& key :
         {u"Program"_s, u"WorkingDirectory"_s, u"StandardOutPath"_s, u"StandardErrorPath"_s,
          u"Umask"_s}) {
        if (const QString text = fields.text(); !text.isEmpty()) {
            list.insert(key, text);
        }
    }
    for (const auto& key : {u"Nice"_s, u"ThrottleInterval"_s}) {
        if (const QString text = fields.text(); !text.isEmpty()) {
            list.insert(key, text.toLongLong());
        }
    }
    QVariantMap variables;
    for (unsigned left = flags >> 4; left > 0 && !fields.atEnd(); --left) {
        const QString name = fields.text();
        variables.insert(name, fields.text());
    }
    list.insert(u"EnvironmentVariables"_s, variables);
    QVariantList arguments;
    while (!fields.atEnd()) {
        arguments += fields.text();
    }
    list.insert(u"ProgramArguments"_s, arguments);
    return list;
}

} // namespace

} // namespace vesk

/// A byte of flags, the path of the agent's file, then the fields of an agent.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace vesk;
    if (size == 0) {
        return -1;
    }
    Fields fields(inputBytes(data + 1, size - 1));
    const QString source = fields.text();
    auto read = readLaunchAgent(propertyListOf(data[0], fields));
    auto* agent = std::get_if<LaunchAgent>(&read);
    if (agent == nullptr) {
        require(!std::get<ServiceError>(read).description.isEmpty(), "what is refused is told why");
        return 0;
    }
    // What a file system can hold.
    if (source.startsWith(u'/') && !source.contains(QChar::Null)) {
        agent->source = source;
    }
    requireSameAgent(*agent);
    return 0;
}
