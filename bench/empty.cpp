// A DLL with nothing in it but the compiler's start-up code: what loading any DLL costs.
extern "C" __declspec(dllexport) void Nothing() {}
