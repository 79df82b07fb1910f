#include "launcher/environment.h"

#include "system/this_process.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <windows.h>

namespace ca::launcher {

namespace {

constexpr std::wstring_view prefix = L"SDL";

constexpr std::array<std::wstring_view, 3> harmless{L"SDL_FRAMEBUFFER_ACCELERATION",
                                                    L"SDL_RENDER_DRIVER", L"SDL_VIDEO_DRIVER"};

// Windows finds a variable by its name in any case.
std::wstring upperCase(std::wstring text) {
    std::transform(text.begin(), text.end(), text.begin(), [](wchar_t c) {
        return c >= L'a' && c <= L'z' ? static_cast<wchar_t>(c - L'a' + L'A') : c;
    });
    return text;
}

} // namespace

void removeOrders() {
    for (const std::wstring& name : system::environmentNames()) {
        const std::wstring upper = upperCase(name);
        const bool isHarmless =
            std::find(harmless.begin(), harmless.end(), upper) != harmless.end();
        if (upper.starts_with(prefix) && !isHarmless) {
            ::SetEnvironmentVariableW(name.c_str(), nullptr);
        }
    }
}

} // namespace ca::launcher
