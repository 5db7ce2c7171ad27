#include "FLKTemplateDesign.h"

std::vector<FLKTemplateDesign> FLKTemplateDesign::builtInDesigns() {
    const FLKSize portrait{1080, 1920}, landscape{1920, 1080};
    using K = FLKDeviceKind;
    using P = FLKDevicePose;
    return {
        {"Phone Portrait", "phone-portrait", portrait, {0x6d5efc, 0xa855f7, 0x1e1b4b, 0x4c1d95}, K::phone, P::upright, true},
        {"Phone Landscape", "phone-landscape", landscape, {0x22d3ee, 0x0ea5e9, 0x0f766e, 0x1e3a8a}, K::phone, P::turnedLeft, true},
        {"Tablet Portrait", "tablet-portrait", portrait, {0xfdba74, 0xfb7185, 0xc2410c, 0x9d174d}, K::tablet, P::upright, true},
        {"Phone Perspective", "phone-perspective", portrait, {0x6ee7b7, 0x2dd4bf, 0x065f46, 0x134e4a}, K::phone, P::perspective, true},
        {"Laptop", "laptop", landscape, {0x475569, 0x334155, 0x0f172a, 0x020617}, K::laptop, P::upright, false},
        {"Full Screen", "full-screen", portrait, {0xfde68a, 0xf9a8d4, 0xa5b4fc, 0x67e8f9}, K::phone, P::none, false},
    };
}
