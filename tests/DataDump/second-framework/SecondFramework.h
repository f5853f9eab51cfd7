// What the second framework does in other ways than ours: how it returns texts, and where it
// throws.
#pragma once

#include <cstddef>

namespace BAS {
class String;
}

namespace second {

// A text in the one buffer for texts, which the next text goes into.
BAS::String const& inBuffer(BAS::String const& text);

// What reading a field returns.
#ifdef TEXTS_VALUES
using Text = BAS::String;
inline BAS::String const& returned(BAS::String const& text) {
    return text;
}
#else
using Text = BAS::String const&;
inline BAS::String const& returned(BAS::String const& text) {
    return inBuffer(text);
}
#endif

// Has the calls of the next plug-in's start-up throw a status "ERR_THROWN": the one after so many
// others, or that and all after it. Says at the end whether any did.
void throwStatus(std::size_t after, bool once);
bool stopThrowing();

// For the framework.
void countFromHere();
void mayThrow();

} // namespace second
