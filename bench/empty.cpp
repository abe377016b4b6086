// A DLL that has only the compiler's start-up code: the floor for loading a DLL.
extern "C" __declspec(dllexport) void Nothing() {}
