// Which slots a class offers: exactly its own, the others answer "not offered" and write nothing.
#include "tests/pka/keys.h"

namespace toolbelt::test {
namespace {

// The slots of `offered` answer these inputs with anything but 30; every other answers 30 and writes nothing.
void expectOnly(cPKA& key, std::initializer_list<int> offered)
{
    const Bytes untouched(600, 0xA5), input(600, 1);
    Bytes output = untouched;
    std::uint32_t length = 600;
    const auto expect = [&](int number, Status status) {
        const bool absent = std::count(offered.begin(), offered.end(), number) == 0;
        EXPECT_EQ(status == 30, absent) << number;
        EXPECT_TRUE(!absent || (length == 600 && output == untouched)) << number;
        output = untouched;
        length = 600;
    };
    const std::pair<int, OutputSlot> outputSlots[] = {{2, &cPKA::encryptPrefixed},    {3, &cPKA::rawToDer},
                                                      {6, &cPKA::publicFromPrefixed}, {7, &cPKA::privateFromPrefixed},
                                                      {8, &cPKA::publicFromDer},      {9, &cPKA::privateFromDer},
                                                      {10, &cPKA::signPrefixed},      {11, &cPKA::signDer}};
    const std::pair<int, ExportSlot> exports[] = {
        {13, &cPKA::exportNumbers}, {14, &cPKA::exportDer}, {15, &cPKA::exportSsh}};
    for (const auto& [number, slot] : outputSlots)
        expect(number, (key.*slot)(output.data(), &length, input.data(), 70));
    for (const auto& [number, slot] : exports) expect(number, (key.*slot)(output.data(), &length));
    expect(4, verifyPrefixed(key, input, Bytes(20)));
    expect(5, verifyDer(key, input, Bytes(20)));
    cPKA* made = nullptr;
    expect(16, key.makePublic(&made));
    EXPECT_EQ(Key(made) != nullptr, std::count(offered.begin(), offered.end(), 16) == 1);
}

TEST(PkaSlots, ClassesOfferTheirSlotsAndNoOthers)
{
    const FieldNumbers &dsa = dsaNumbers("dsa512-160"), &elgamal = elgamalNumbers();
    const struct
    {
        Key key;
        std::uint32_t algorithm;
        std::int32_t length, maxInput;
        std::initializer_list<int> offered;
    } classes[] = {
        {Key(new (std::nothrow) cPKA), PKA_NONE, 0, 0, {}},
        {rsaKey("rsa1025").open(), 1, 129, 129, {2, 3, 4, 5, 6, 8, 13, 14, 15}},
        {rsaKey("rsa1025").secret(), 1, 129, 129, {3, 7, 9, 10, 11, 13, 14, 16}},
        {dsa.open(), 17, 64, 20, {4, 5, 14}},
        {dsa.secret(), 17, 64, 20, {10, 11, 14, 16}},
        {elgamal.open(), 20, 64, 64, {2, 3, 4, 5, 14}},
        {elgamal.secret(), 20, 64, 64, {7, 10, 14, 16}},
    };
    const Pool pool(Bytes(1000, 0x31));
    for (const auto& c : classes) {
        SCOPED_TRACE(&c - classes);
        EXPECT_EQ(c.key->algorithm(), c.algorithm);
        EXPECT_EQ(c.key->keyLength(), c.length);
        EXPECT_EQ(c.key->maxInputLength(), c.maxInput);
        expectOnly(*c.key, c.offered);
    }
}

} // namespace
} // namespace toolbelt::test
