#include <TavaroCore/Privacy/FindingHash.h>

#include <TavaroCore/Privacy/Private/SensitiveText.h>

#include <fmt/format.h>

#include <bit>

namespace tavaro {

namespace {

class SipHash {
public:
    explicit SipHash(FindingKey const& key)
        : a_(key.words[0] ^ 0x736F6D6570736575)
        , b_(key.words[1] ^ 0x646F72616E646F6D)
        , c_(key.words[0] ^ 0x6C7967656E657261)
        , d_(key.words[1] ^ 0x7465646279746573) {}

    std::uint64_t of(std::string_view text) {
        constexpr std::size_t block = 8;
        auto const length = text.size();
        for (; text.size() >= block; text.remove_prefix(block)) add(littleEndian(text.substr(0, block)));
        add(littleEndian(text) | static_cast<std::uint64_t>(length & 0xFF) << 56);
        c_ ^= 0xFF;
        for (int i = 0; i < 4; ++i) mix();
        return a_ ^ b_ ^ c_ ^ d_;
    }

private:
    static std::uint64_t littleEndian(std::string_view bytes) {
        std::uint64_t word = 0;
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            word |= static_cast<std::uint64_t>(static_cast<unsigned char>(bytes[i])) << (8 * i);
        }
        return word;
    }

    void add(std::uint64_t word) {
        d_ ^= word;
        mix();
        mix();
        a_ ^= word;
    }

    void mix() {
        a_ += b_;
        b_ = std::rotl(b_, 13) ^ a_;
        a_ = std::rotl(a_, 32);
        c_ += d_;
        d_ = std::rotl(d_, 16) ^ c_;
        a_ += d_;
        d_ = std::rotl(d_, 21) ^ a_;
        c_ += b_;
        b_ = std::rotl(b_, 17) ^ c_;
        c_ = std::rotl(c_, 32);
    }

    std::uint64_t a_, b_, c_, d_;
};

}

std::string findingHash(std::string_view text, FindingKey const& key) {
    return fmt::format("{:016x}", SipHash(key).of(SensitiveText::foldLookAlikes(text)));
}

}
