/* What a compiler's runtime library does before main, and what the compiler expects of one. */
typedef struct {
    int newMode;
} StartupInformation;

__declspec(dllimport) int __cdecl __getmainargs(int* argc, char*** argv, char*** environment, int expandWildcards,
                                                StartupInformation* information);
__declspec(dllimport) void __cdecl exit(int code);

int main(int argc, char** argv);

/* Referred to by every object that computes with floating-point numbers. */
int _fltused = 0x9875;

void mainCRTStartup(void) {
    int argc = 0;
    char** argv = 0;
    char** environment = 0;
    StartupInformation information = {0};
    __getmainargs(&argc, &argv, &environment, 0, &information);
    exit(main(argc, argv));
}
