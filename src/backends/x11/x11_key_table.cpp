#include "backends/x11/x11_key_table.h"

#include <algorithm>
#include <utility>

#include <X11/XF86keysym.h>
#include <X11/keysym.h>

namespace brisko::platform::x11 {
namespace {

// Each virtual key code and the keysym at that position of a US keyboard, in key code order.
// Letters, digits and punctuation are their unshifted keysyms; the event's flags add the shift.
// Absent codes (10 ISO section, 52, 63 fn, 66, 68, 70, 77, 93-95, 102, 104, 108, 110, 112) have
// no key on a US ANSI keyboard that X knows.
constexpr std::pair<KeyCode, xcb_keysym_t> keysymsByKeyCode[] = {
    {0, XK_a},           {1, XK_s},           {2, XK_d},           {3, XK_f},
    {4, XK_h},           {5, XK_g},           {6, XK_z},           {7, XK_x},
    {8, XK_c},           {9, XK_v},           {11, XK_b},          {12, XK_q},
    {13, XK_w},          {14, XK_e},          {15, XK_r},          {16, XK_y},
    {17, XK_t},          {18, XK_1},          {19, XK_2},          {20, XK_3},
    {21, XK_4},          {22, XK_6},          {23, XK_5},          {24, XK_equal},
    {25, XK_9},          {26, XK_7},          {27, XK_minus},      {28, XK_8},
    {29, XK_0},          {30, XK_bracketright}, {31, XK_o},        {32, XK_u},
    {33, XK_bracketleft}, {34, XK_i},         {35, XK_p},          {36, XK_Return},
    {37, XK_l},          {38, XK_j},          {39, XK_apostrophe}, {40, XK_k},
    {41, XK_semicolon},  {42, XK_backslash},  {43, XK_comma},      {44, XK_slash},
    {45, XK_n},          {46, XK_m},          {47, XK_period},     {48, XK_Tab},
    {49, XK_space},      {50, XK_grave},      {51, XK_BackSpace},  {53, XK_Escape},
    {54, XK_Super_R},    {55, XK_Super_L},    {56, XK_Shift_L},    {57, XK_Caps_Lock},
    {58, XK_Alt_L},      {59, XK_Control_L},  {60, XK_Shift_R},    {61, XK_Alt_R},
    {62, XK_Control_R},  {64, XK_F17},        {65, XK_KP_Decimal}, {67, XK_KP_Multiply},
    {69, XK_KP_Add},     {71, XK_Clear},      {72, XF86XK_AudioRaiseVolume},
    {73, XF86XK_AudioLowerVolume},            {74, XF86XK_AudioMute}, {75, XK_KP_Divide},
    {76, XK_KP_Enter},   {78, XK_KP_Subtract}, {79, XK_F18},       {80, XK_F19},
    {81, XK_KP_Equal},   {82, XK_KP_0},       {83, XK_KP_1},       {84, XK_KP_2},
    {85, XK_KP_3},       {86, XK_KP_4},       {87, XK_KP_5},       {88, XK_KP_6},
    {89, XK_KP_7},       {90, XK_F20},        {91, XK_KP_8},       {92, XK_KP_9},
    {96, XK_F5},         {97, XK_F6},         {98, XK_F7},         {99, XK_F3},
    {100, XK_F8},        {101, XK_F9},        {103, XK_F11},       {105, XK_F13},
    {106, XK_F16},       {107, XK_F14},       {109, XK_F10},       {111, XK_F12},
    {113, XK_F15},
    // The help key sits where PC keyboards have insert, and X applications expect insert there.
    {114, XK_Insert},
    {115, XK_Home},      {116, XK_Prior},     {117, XK_Delete},    {118, XK_F4},
    {119, XK_End},       {120, XK_F2},        {121, XK_Next},      {122, XK_F1},
    {123, XK_Left},      {124, XK_Right},     {125, XK_Down},      {126, XK_Up},
};

static_assert(std::is_sorted(std::begin(keysymsByKeyCode), std::end(keysymsByKeyCode),
                             [](const auto& a, const auto& b) { return a.first < b.first; }),
              "keysymsByKeyCode is searched by bisection");

constexpr xcb_keysym_t unicodeKeysymBase = 0x01000000;

}  // namespace

std::optional<xcb_keysym_t> keysymForKeyCode(KeyCode code) {
    const auto found = std::lower_bound(std::begin(keysymsByKeyCode), std::end(keysymsByKeyCode), code,
                                        [](const auto& entry, KeyCode c) { return entry.first < c; });
    if (found == std::end(keysymsByKeyCode) || found->first != code) return std::nullopt;
    return found->second;
}

xcb_keysym_t keysymForCharacter(char32_t character) {
    const bool latin1 = (character >= 0x20 && character <= 0x7E) || (character >= 0xA0 && character <= 0xFF);
    return latin1 ? static_cast<xcb_keysym_t>(character) : unicodeKeysymBase + character;
}

const std::array<ModifierKeys, modifierGroupCount>& modifierKeys() {
    static constexpr std::array<ModifierKeys, modifierGroupCount> keys = {{
        {flag::command, XK_Super_L, XK_Super_R},
        {flag::shift, XK_Shift_L, XK_Shift_R},
        {flag::alternate, XK_Alt_L, XK_Alt_R},
        {flag::control, XK_Control_L, XK_Control_R},
    }};
    return keys;
}

}  // namespace brisko::platform::x11
