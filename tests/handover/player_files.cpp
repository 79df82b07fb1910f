// Copies the player's files as a launcher in its place does, first setting variables:
// player_files [NAME VALUE]... where "-" unsets one.
#include "install/user_data.h"

#include <windows.h>

#include <shellapi.h>

int main() {
    int count = 0;
    wchar_t** const words = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    for (int i = 1; i + 1 < count; i += 2) {
        ::SetEnvironmentVariableW(words[i], *words[i + 1] == L'-' ? nullptr : words[i + 1]);
    }
    ::LocalFree(words);
    ca::install::migrateUserData();
}
