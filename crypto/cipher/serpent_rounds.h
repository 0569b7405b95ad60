// The S-boxes of Serpent and its rounds over words of any width, one block or many; they belong to the file that
// includes this one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

namespace toolbelt {
namespace {

constexpr std::uint32_t ROUNDS = 32;

// The S-boxes as the standard gives them. The circuits below are checked against them while compiling.
constexpr std::uint8_t tables[8][16] = {
    {3, 8, 15, 1, 10, 6, 5, 11, 14, 13, 4, 2, 7, 0, 9, 12}, {15, 12, 2, 7, 9, 0, 5, 10, 1, 11, 14, 8, 6, 13, 3, 4},
    {8, 6, 7, 9, 3, 12, 10, 15, 13, 1, 14, 4, 0, 11, 5, 2}, {0, 15, 11, 8, 12, 9, 6, 3, 13, 1, 2, 4, 10, 7, 5, 14},
    {1, 15, 8, 3, 12, 0, 11, 6, 2, 5, 4, 10, 9, 14, 7, 13}, {15, 5, 2, 11, 4, 10, 9, 12, 0, 3, 14, 8, 13, 6, 7, 1},
    {7, 2, 12, 5, 8, 4, 6, 11, 14, 9, 1, 15, 13, 3, 10, 0}, {1, 13, 15, 0, 14, 8, 2, 11, 7, 4, 12, 10, 9, 3, 5, 6},
};

// A circuit: variables a to d are the inputs, bit 0 first, and each gate's result is the next letter. A gate names its
// operands and its operation; x^1 is the complement of x. Then the four outputs, bit 0 first. All were found by a
// search for few gates.
struct Circuit
{
    const char* gates;
    const char* outputs;

    constexpr std::size_t size() const
    {
        std::size_t length = 0;
        while (gates[length] != '\0') ++length;
        return (length + 1) / 4;
    }
};

constexpr Circuit S[8] = {
    {"d^a e^c f^b e&b d&a h^a i^g f^1 l^j m|k j|c n^j n^f o^g", "qprk"},
    {"b^1 e|a f^c g^d h^a i&g j^e h|c l&k m^i n&k h&c o^g p^1 r|q s^k", "qthn"},
    {"c&a e^d f&b b^a h^c i^f h|f k&j l|g m^k i^1 n^i o^g j^a", "rpmq"},
    {"d|a d^b e^c b&a h^c i&g j^f k|h k^a m&e n^i l^g n^g p|o r^q", "spom"},
    {"d^a e&a f^c e|b h^g g^a j|i e^b l^k m&k i|b o^e i^1 n^e r^j", "qsmp"},
    {"b^a e&b f^c d^1 h|e i^g g^a j&h l^e k&j n&m k^h p^o h^e r^n", "jmsq"},
    {"d&a d^b e^c g^1 h^b h|f f^a h|b l^a m&k l&k o|i m^j n^g o^j q^p", "sitr"},
    {"c^b e&c f^d g^a h&a i^e h^b k&c h^1 l|g g&d k&j m|j j&i q^n r^k p^o", "stuj"},
};
constexpr Circuit inverseS[8] = {
    {"b|a d^c f^e g^1 c&b i^a g&d j^h l|k m^b n&d o|g p^d q^l r|n s^h t^d", "nuhr"},
    {"d^b e&c e&d g^a h^c f^d j|i k^e l|i m^c l^h n^j o^1 p^1 r|q s^h", "roti"},
    {"c^b e^d f|b e^a f&c g^a i^g k&h l^j j^d m^1 o^n p|m q^k l^i", "nsor"},
    {"c^b e&b f^a g|d h^e i^g g|c k&j j^d m&h n^k h^d p|l o|i r^g n^b", "istq"},
    {"d|c e&a f^b g&a h^c i^d a^1 k|j l^d j&i n^g o^m m&g q^k r^j", "pjso"},
    {"c^1 e&b f^d g&a h^e d|a i|b j^e c^a j&b i^b k&a l^k m|h r^n p^g", "qtso"},
    {"c|a e^d f^b g^1 h^a h|f g^c i&d l^g l|k n^j m|k k&d q^m p^i s^b r^o", "oitu"},
    {"b&a b|a e|c d^b h&f a^1 d|a i|g j^h m^l n|d i^c p^o h|e k&c f&d t^g s^r", "qnvu"},
};

template <char OPERATION, char SECOND, typename Word>
constexpr Word gate(Word first, Word second)
{
    if constexpr (SECOND == '1')
        return ~first;
    else if constexpr (OPERATION == '^')
        return first ^ second;
    else if constexpr (OPERATION == '&')
        return first & second;
    else
        return first | second;
}

constexpr std::size_t variable(char letter)
{
    return letter == '1' ? 0 : static_cast<std::size_t>(letter - 'a');
}

// x = the S-box of x. Everything about the circuit is known to the compiler, so this becomes straight-line code.
template <const Circuit (&BOXES)[8], std::size_t BOX, typename Word, std::size_t... I>
[[gnu::always_inline]] constexpr void applyGates(Word (&x)[4], std::index_sequence<I...>)
{
    constexpr Circuit box = BOXES[BOX];
    Word v[4 + sizeof...(I)] = {x[0], x[1], x[2], x[3]};
    ((v[4 + I] = gate<box.gates[4 * I + 1], box.gates[4 * I + 2]>(v[variable(box.gates[4 * I])],
                                                                  v[variable(box.gates[4 * I + 2])])),
     ...);
    constexpr std::size_t y[4] = {variable(box.outputs[0]), variable(box.outputs[1]), variable(box.outputs[2]),
                                  variable(box.outputs[3])};
    x[0] = v[y[0]], x[1] = v[y[1]], x[2] = v[y[2]], x[3] = v[y[3]];
}

template <const Circuit (&BOXES)[8], std::size_t BOX, typename Word>
[[gnu::always_inline]] constexpr void substitute(Word (&x)[4])
{
    applyGates<BOXES, BOX>(x, std::make_index_sequence<BOXES[BOX].size()>());
}

// Runs all 16 inputs through a circuit at once, input n in bit n of the words.
template <const Circuit (&BOXES)[8], std::size_t BOX>
constexpr bool circuitGives(bool inverse)
{
    std::uint32_t x[4] = {0xAAAA, 0xCCCC, 0xF0F0, 0xFF00};
    substitute<BOXES, BOX>(x);
    for (std::uint32_t n = 0; n < 16; ++n) {
        const std::uint32_t y = (x[0] >> n & 1) | (x[1] >> n & 1) << 1 | (x[2] >> n & 1) << 2 | (x[3] >> n & 1) << 3;
        if (inverse ? tables[BOX][y] != n : tables[BOX][n] != y) return false;
    }
    return true;
}

template <std::size_t... BOX>
constexpr bool circuitsAreRight(std::index_sequence<BOX...>)
{
    return (circuitGives<S, BOX>(false) && ...) && (circuitGives<inverseS, BOX>(true) && ...);
}
static_assert(circuitsAreRight(std::make_index_sequence<8>()));

using SerpentKey = std::uint32_t[4];

template <int BY, typename Word>
[[gnu::always_inline]] inline Word rotl(Word x)
{
    return x << BY | x >> (32 - BY);
}

template <typename Word>
[[gnu::always_inline]] inline void addKey(Word (&x)[4], const SerpentKey& key)
{
    x[0] ^= key[0], x[1] ^= key[1], x[2] ^= key[2], x[3] ^= key[3];
}

template <typename Word>
[[gnu::always_inline]] inline void linearTransform(Word (&x)[4])
{
    x[0] = rotl<13, Word>(x[0]);
    x[2] = rotl<3, Word>(x[2]);
    x[1] = rotl<1, Word>(x[1] ^ x[0] ^ x[2]);
    x[3] = rotl<7, Word>(x[3] ^ x[2] ^ x[0] << 3);
    x[0] = rotl<5, Word>(x[0] ^ x[1] ^ x[3]);
    x[2] = rotl<22, Word>(x[2] ^ x[3] ^ x[1] << 7);
}

template <typename Word>
[[gnu::always_inline]] inline void inverseLinearTransform(Word (&x)[4])
{
    x[2] = rotl<10>(x[2]) ^ x[3] ^ x[1] << 7;
    x[0] = rotl<27>(x[0]) ^ x[1] ^ x[3];
    x[3] = rotl<25>(x[3]) ^ x[2] ^ x[0] << 3;
    x[1] = rotl<31>(x[1]) ^ x[0] ^ x[2];
    x[2] = rotl<29>(x[2]);
    x[0] = rotl<19>(x[0]);
}

// Calls step.template operator()<N>() for N = 0 to 7: the eight boxes in turn.
template <typename Step, std::size_t... N>
[[gnu::always_inline]] inline void forEachBox(Step step, std::index_sequence<N...>)
{
    (step.template operator()<N>(), ...);
}

constexpr auto eightBoxes = std::make_index_sequence<8>();

// x: the words of a block, or of several groups of blocks, whose rounds take turns; K: the round keys.
template <typename Word, std::size_t GROUPS>
[[gnu::always_inline]] inline void decryptRounds(const SerpentKey* K, Word (&x)[GROUPS][4])
{
    for (Word(&w)[4] : x) addKey(w, K[ROUNDS]);
    for (std::uint32_t round = ROUNDS; round > 0; round -= 8)
        forEachBox(
            [&]<std::size_t N>() __attribute__((always_inline)) {
#pragma GCC unroll 2
                for (Word(&w)[4] : x) {
                    if (N != 0 || round != ROUNDS) inverseLinearTransform(w);
                    substitute<inverseS, 7 - N>(w);
                    addKey(w, K[round - 1 - N]);
                }
            },
            eightBoxes);
}

} // namespace
} // namespace toolbelt
