#include "app/CommandLine.h"

#include "agent/ServicePort.h"

#include <algorithm>
#include <array>

namespace vesk {

using namespace Qt::StringLiterals;

namespace {

struct Switch {
    QStringView name;
    CommandLine::Request request;
};

/// The first that is among the arguments counts.
constexpr std::array switches{
    Switch{u"--self-test", CommandLine::Request::SelfTest},
    Switch{u"--help", CommandLine::Request::Help},
    Switch{u"--version", CommandLine::Request::Version},
    Switch{u"--quit", CommandLine::Request::Quit},
    Switch{u"--setup", CommandLine::Request::Setup},
    Switch{u"--settings", CommandLine::Request::Settings},
    Switch{u"--start", CommandLine::Request::Start},
};

} // namespace

CommandLine::CommandLine(int argc, const char* const* argv) {
    arguments_.reserve(argc);
    for (int index = 0; index < argc; ++index) {
        arguments_.append(QString::fromLocal8Bit(argv[index]));
    }
}

CommandLine::Request CommandLine::request() const {
    const auto* const found =
        std::find_if(switches.begin(), switches.end(), [this](const Switch& each) {
            return arguments_.contains(each.name);
        });
    return found == switches.end() ? Request::Open : found->request;
}

bool CommandLine::firstIsNoPort() const {
    if (arguments_.size() < 2) {
        return false;
    }
    const QString& first = arguments_.at(1);
    return !portNumber(first)
           && std::none_of(switches.begin(), switches.end(), [&first](const Switch& each) {
                  return each.name == first;
              });
}

QString helpText() {
    return uR"(Usage: VeskWorkerControl [PORT] [SWITCH]
Shows, starts and controls the VeskWorker service of this machine.

PORT is where the service listens, as the first argument; 45835 without it.

  --start      start the service unless it runs; in a dashboard that is open already, do what
               its start button does
  --settings   open the processing settings
  --setup      open the setup sheet
  --quit       quit the dashboard that is open; the service keeps running
  --self-test  check the presentation and the policies without a display, print one line, end
  --help       print this text
  --version    print the version

If a dashboard is open already, it gets the request, and the second copy ends.
)"_s;
}

QString versionText() {
    return u"VeskWorkerControl " VESK_VERSION "\n"_s;
}

} // namespace vesk
