#include "agent/ErrorLine.h"
#include "agent/systemd/AgentGenerator.h"

#include <QFile>

#include <cstdio>

// Run by the user's systemd before it reads its units, with the folders for what it makes: the
// first is the one for units that others may override. A failure here would only be noise at login.
int main(int count, char** words) {
    const QByteArray home = qgetenv("HOME");
    if (count < 2 || home.isEmpty()) {
        std::fputs("vesk-agent-generator: no folder to write to, or no home folder\n", stderr);
        return 1;
    }
    const QStringList complaints = vesk::generateAgentUnits(
        {.agents = QFile::decodeName(home) + QStringLiteral("/Library/LaunchAgents"),
         .units = QFile::decodeName(words[1])});
    for (const QString& complaint : complaints) {
        vesk::writeErrorLine(QStringLiteral("vesk-agent-generator: ") + complaint);
    }
    return 0;
}
