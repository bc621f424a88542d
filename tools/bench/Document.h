#pragma once

#include <string>

namespace vesk::bench {

/// What the peer answers.
enum class Document {
    None,     ///< nothing: it refuses connections
    Resting,  ///< three bays without a job, the same each time
    Still,    ///< three bays at work, the same each time
    Changing, ///< three bays at work that get on with each answer
    Large,    ///< as Changing, with 10,000 bays and as many phones
};

/// The health document that is sent in answer number `fetch`, which counts from 0.
[[nodiscard]] std::string healthText(Document document, int fetch);

} // namespace vesk::bench
