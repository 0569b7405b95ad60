// A library that needs another one beside it.
extern "C" __declspec(dllimport) int needed();
extern "C" __declspec(dllexport) int dependent()
{
    return needed();
}
