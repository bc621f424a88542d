#include "app/CommandLine.h"

namespace vesk {

using namespace Qt::StringLiterals;

CommandLine::CommandLine(int argc, const char* const* argv) {
    arguments_.reserve(argc);
    for (int index = 0; index < argc; ++index) {
        arguments_.append(QString::fromLocal8Bit(argv[index]));
    }
}

bool CommandLine::selfTest() const {
    return arguments_.contains(u"--self-test"_s);
}

bool CommandLine::setup() const {
    return arguments_.contains(u"--setup"_s);
}

} // namespace vesk
