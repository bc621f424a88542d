#include "app/OutputText.h"

#include <cstdio>
#include <cstdlib>

namespace vesk {

int writeOutput(const QString& text) {
    // What is written may stay in the buffer until it is flushed.
    const bool written =
        std::fputs(text.toUtf8().constData(), stdout) >= 0 && std::fflush(stdout) == 0;
    return written ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace vesk
