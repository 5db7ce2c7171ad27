#include "core/capture/FLKX11Monitor.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/extensions/Xrandr.h>

#include "core/capture/FLKCaptureError.h"
#include "core/capture/FLKEDID.h"

namespace {
std::vector<uint8_t> edidOfOutput(Display* display, RROutput output) {
    Atom edidAtom = XInternAtom(display, RR_PROPERTY_RANDR_EDID, True);
    if (edidAtom == None) return {};
    unsigned char* data = nullptr;
    int format = 0;
    unsigned long count = 0;
    unsigned long remaining = 0;
    Atom type = None;
    std::vector<uint8_t> edid;
    if (XRRGetOutputProperty(display, output, edidAtom, 0, 256, False, False, AnyPropertyType, &type, &format, &count,
                             &remaining, &data) == Success &&
        data) {
        if (format == 8) edid.assign(data, data + count);
        XFree(data);
    }
    return edid;
}

std::string atomName(Display* display, Atom atom) {
    char* text = atom != None ? XGetAtomName(display, atom) : nullptr;
    std::string name = text ? text : "";
    if (text) XFree(text);
    return name;
}
}  // namespace

std::vector<FLKX11Monitor> FLKX11Monitor::list(Display* display) {
    std::vector<FLKX11Monitor> monitors;
    int count = 0;
    XRRMonitorInfo* infos = XRRGetMonitors(display, DefaultRootWindow(display), True, &count);
    XRRScreenResources* resources = XRRGetScreenResourcesCurrent(display, DefaultRootWindow(display));
    for (int i = 0; i < count; ++i) {
        const XRRMonitorInfo& info = infos[i];
        FLKX11Monitor monitor;
        monitor.x = info.x;
        monitor.y = info.y;
        monitor.width = info.width;
        monitor.height = info.height;
        monitor.outputName = atomName(display, info.name);
        std::vector<uint8_t> edid;
        if (info.noutput > 0 && resources) {
            if (XRROutputInfo* output = XRRGetOutputInfo(display, resources, info.outputs[0])) {
                monitor.outputName = std::string(output->name, static_cast<size_t>(output->nameLen));
                XRRFreeOutputInfo(output);
            }
            edid = edidOfOutput(display, info.outputs[0]);
        }
        monitor.name = flk::edid::productName(edid);
        if (!monitor.name && !monitor.outputName.empty()) monitor.name = monitor.outputName;
        auto identity = flk::edid::identity(edid);
        monitor.uniqueIdentifier = "display:" + (identity ? *identity : monitor.outputName);
        monitors.push_back(std::move(monitor));
    }
    if (resources) XRRFreeScreenResources(resources);
    if (infos) XRRFreeMonitors(infos);
    return monitors;
}

std::optional<std::vector<FLKX11Monitor>> FLKX11Monitor::list(const std::string& displayName, FLKError* error) {
    Display* display = XOpenDisplay(displayName.empty() ? nullptr : displayName.c_str());
    if (!display) {
        flk::setError(error, flk::capture::captureFailedError(
                                 "No X display to record" +
                                 (displayName.empty() ? std::string(" (DISPLAY is not set or cannot be opened).")
                                                      : " (cannot open \"" + displayName + "\").")));
        return std::nullopt;
    }
    auto monitors = list(display);
    XCloseDisplay(display);
    return monitors;
}
