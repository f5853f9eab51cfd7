// A message of a stream as anybody may send it: a first line names the encoding, the rest is data.
#include "EdrMessage.h"
#include "FuzzInput.h"

#include <algorithm>

// It is decoded within the bound, or refused with a reason; nothing else.
int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    auto const input = fuzz::textOf(data, size);
    auto const end = std::min(input.find('\n'), input.size());
    auto const encoding = input.substr(0, end);
    auto const content = end < input.size() ? input.substr(end + 1) : std::string_view();
    stream::MessageDecoder decoder;
    try {
        std::string text(stream::MessageDecoder::decodedSize(encoding, content), '\0');
        fuzz::promise(encoding.empty() || encoding == "zstd", "only known encodings are decoded");
        fuzz::promise(encoding.empty() || text.size() <= stream::mostDecodedBytes,
                      "what is decoded is bounded");
        text.resize(decoder.decode(encoding, content, text));
        fuzz::promise(!encoding.empty() || text == content, "plain text stays as it is");
        auto const compressed = stream::MessageEncoder().compressed(text);
        std::string again(stream::MessageDecoder::decodedSize("zstd", compressed), '\0');
        fuzz::promise(decoder.decode("zstd", compressed, again) == text.size() && again == text,
                      "what was decoded is compressed and decoded again");
    } catch (stream::MessageError const& error) {
        fuzz::promise(*error.what() != '\0', "a refusal says why");
    }
    return 0;
}
