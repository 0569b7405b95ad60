extern "C" __declspec(dllexport) int needed()
{
    return 1;
}
