// libFuzzer's way into the one target that is linked with this file.
#include "fuzz/target.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    toolbelt::fuzz::Target::first->run({data, size});
    return 0;
}
