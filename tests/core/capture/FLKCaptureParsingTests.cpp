// What adb, monitors and V4L2 drivers tell us, read back into sources.
#include <gtest/gtest.h>

#include <linux/videodev2.h>

#include <cstring>

#include "core/capture/FLKAdbDeviceList.h"
#include "core/capture/FLKDeviceScreenRecorder.h"
#include "core/capture/FLKEDID.h"
#include "core/capture/FLKMobileDevice.h"
#include "core/capture/FLKV4L2Node.h"

TEST(FLKAdbDeviceList, ReadsEveryStateAndTheModelWithSpaces) {
    const std::string output =
        "List of devices attached\n"
        "R58N12ABCDE            device usb:1-2 product:beyond1 model:SM_G973F device:beyond1 transport_id:3\n"
        "emulator-5554          device product:sdk_gphone64 model:sdk_gphone64_x86_64 device:emu64x transport_id:1\n"
        "0123456789ABCDEF       unauthorized usb:1-3 transport_id:4\n"
        "192.168.1.20:5555      offline transport_id:5\n"
        "\n";
    auto devices = flk::adb::parseDevices(output);
    ASSERT_EQ(devices.size(), 4u);
    EXPECT_EQ(devices[0].serial, "R58N12ABCDE");
    EXPECT_EQ(devices[0].state, "device");
    EXPECT_EQ(devices[0].displayName(), "SM G973F");
    EXPECT_EQ(devices[1].displayName(), "sdk gphone64 x86 64");
    EXPECT_EQ(devices[2].state, "unauthorized");
    EXPECT_EQ(devices[2].displayName(), "0123456789ABCDEF");  // no model until the phone trusts us
    EXPECT_EQ(devices[3].serial, "192.168.1.20:5555");
    EXPECT_EQ(devices[3].state, "offline");
}

TEST(FLKAdbDeviceList, KeepsSpacesInsideSerials) {
    FLKAdbDeviceEntry entry;
    ASSERT_TRUE(flk::adb::parseDeviceLine("adb-XYZ (2)._adb-tls-connect._tcp device product:p model:Pixel_7 device:d",
                                          &entry));
    EXPECT_EQ(entry.serial, "adb-XYZ (2)._adb-tls-connect._tcp");
    EXPECT_EQ(entry.model, "Pixel_7");
    ASSERT_TRUE(flk::adb::parseDeviceLine("my phone\tunauthorized", &entry));
    EXPECT_EQ(entry.serial, "my phone");
    EXPECT_EQ(entry.state, "unauthorized");
    // A serial that happens to end in a state word keeps it.
    ASSERT_TRUE(flk::adb::parseDeviceLine("test device   offline transport_id:2", &entry));
    EXPECT_EQ(entry.serial, "test device");
    EXPECT_EQ(entry.state, "offline");
}

TEST(FLKAdbDeviceList, ReadsPermissionTroubleAndSkipsNoise) {
    FLKAdbDeviceEntry entry;
    ASSERT_TRUE(flk::adb::parseDeviceLine(
        "0123ABCD    no permissions (user in plugdev group; are your udev rules wrong?); see "
        "[http://developer.android.com/tools/device.html] usb:1-1 transport_id:7",
        &entry));
    EXPECT_EQ(entry.serial, "0123ABCD");
    EXPECT_EQ(entry.state, "no permissions");
    EXPECT_FALSE(entry.isReady());
    EXPECT_FALSE(flk::adb::parseDeviceLine("* daemon started successfully", &entry));
    EXPECT_FALSE(flk::adb::parseDeviceLine("List of devices attached", &entry));
    EXPECT_FALSE(flk::adb::parseDeviceLine("loneword", &entry));
    EXPECT_FALSE(flk::adb::parseDeviceLine("serial sleeping", &entry));
}

TEST(FLKAdbDeviceList, UnauthorizedAndOfflinePhonesCannotBeChosen) {
    auto devices = flk::adb::parseDevices("a device model:A\nb unauthorized\nc offline\n");
    ASSERT_EQ(devices.size(), 3u);
    FLKMobileDevice ready(devices[0]);
    FLKMobileDevice unauthorized(devices[1]);
    FLKMobileDevice offline(devices[2]);
    EXPECT_TRUE(ready.isChoosable());
    EXPECT_EQ(unauthorized.state(), FLKDevice::State::unauthorized);
    EXPECT_EQ(offline.state(), FLKDevice::State::offline);
    EXPECT_FALSE(unauthorized.isChoosable());
    EXPECT_EQ(unauthorized.captureInput(), nullptr);
    EXPECT_NE(ready.captureInput(), nullptr);
    EXPECT_EQ(ready.captureInput(), ready.captureInput());  // made once and kept
}

TEST(FLKAdbDeviceList, WrappersOfOnePhoneAreEqualAndHashAlike) {
    FLKAdbDeviceEntry entry{"R58", "device", "Pixel_7", "", ""};
    auto a = std::make_shared<FLKMobileDevice>(entry);
    entry.model = "Renamed";
    auto b = std::make_shared<FLKMobileDevice>(entry);
    auto c = std::make_shared<FLKMobileDevice>(FLKAdbDeviceEntry{"R59", "device", "Pixel_7", "", ""});
    EXPECT_TRUE(FLKDeviceEqual{}(a, b));
    EXPECT_EQ(FLKDeviceHash{}(a), FLKDeviceHash{}(b));
    EXPECT_FALSE(FLKDeviceEqual{}(a, c));
}

TEST(FLKAdbTrackDevices, SplitsBlocksAcrossReads) {
    std::string first = "R58\tdevice product:p model:Pixel_7 device:d\n";
    std::string second = "R58\toffline\nemulator-5554\tdevice\n";
    char header[5];
    std::snprintf(header, sizeof header, "%04zx", first.size());
    std::string stream = std::string(header) + first;
    std::snprintf(header, sizeof header, "%04zX", second.size());
    stream += std::string(header) + second + "0000";

    std::string buffer;
    std::vector<std::string> payloads;
    // Fed in pieces that cut through a length and through a payload.
    for (size_t cut : {2u, 20u, 49u}) {
        buffer += stream.substr(0, cut);
        stream.erase(0, cut);
        ASSERT_TRUE(flk::adb::takeTrackDevicesBlocks(buffer, &payloads));
    }
    // 71 bytes so far: the first block is complete, the second is not.
    ASSERT_LT(first.size() + 4, 71u);
    EXPECT_EQ(payloads.size(), 1u);
    buffer += stream;
    ASSERT_TRUE(flk::adb::takeTrackDevicesBlocks(buffer, &payloads));
    ASSERT_EQ(payloads.size(), 3u);
    EXPECT_EQ(payloads[0], first);
    EXPECT_EQ(payloads[1], second);
    EXPECT_EQ(payloads[2], "");  // the last phone left
    EXPECT_TRUE(buffer.empty());
    EXPECT_EQ(flk::adb::parseDevices(payloads[1]).size(), 2u);

    std::string garbage = "zz12hello";
    EXPECT_FALSE(flk::adb::takeTrackDevicesBlocks(garbage, &payloads));
}

namespace {
std::vector<uint8_t> edidWithDescriptors(const std::vector<std::pair<uint8_t, std::string>>& descriptors) {
    std::vector<uint8_t> edid(128, 0);
    const uint8_t header[8] = {0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00};
    std::memcpy(edid.data(), header, 8);
    edid[8] = 0x10;  // "DEL": D=4, E=5, L=12 -> 0 00100 00101 01100
    edid[9] = 0xAC;
    edid[10] = 0x34;
    edid[11] = 0x12;
    edid[12] = 0x39;
    edid[13] = 0x30;
    size_t offset = 54;
    for (const auto& [tag, text] : descriptors) {
        edid[offset + 3] = tag;
        std::string padded = text.size() < 13 ? text + "\n" : text;
        for (size_t i = 0; i < 13; ++i) edid[offset + 5 + i] = i < padded.size() ? padded[i] : ' ';
        offset += 18;
    }
    return edid;
}
}  // namespace

TEST(FLKEDID, NameComesFromTheProductNameDescriptorOnly) {
    auto edid = edidWithDescriptors({{0xFF, "SERIAL123"}, {0xFE, "Other text"}, {0xFC, "DELL U2720Q"}});
    EXPECT_EQ(flk::edid::productName(edid), "DELL U2720Q");
    EXPECT_EQ(flk::edid::identity(edid), "DEL-1234-12345");
    // Thirteen characters fill the descriptor with no line feed.
    EXPECT_EQ(flk::edid::productName(edidWithDescriptors({{0xFC, "ABCDEFGHIJKLM"}})), "ABCDEFGHIJKLM");
    EXPECT_EQ(flk::edid::productName(edidWithDescriptors({{0xFF, "ONLYSERIAL"}})), std::nullopt);
    // A timing descriptor (non-zero pixel clock) is never read as text even with the tag byte.
    auto timing = edidWithDescriptors({{0xFC, "NOTANAME"}});
    timing[54] = 0x01;
    EXPECT_EQ(flk::edid::productName(timing), std::nullopt);
    auto broken = edid;
    broken[1] = 0;
    EXPECT_EQ(flk::edid::productName(broken), std::nullopt);
    EXPECT_EQ(flk::edid::productName(std::vector<uint8_t>(edid.begin(), edid.begin() + 100)), std::nullopt);
}

TEST(FLKV4L2Node, CaptureNodesByTheirOwnCapabilities) {
    auto caps = [](uint32_t capabilities, uint32_t deviceCaps) {
        v4l2_capability c{};
        std::strcpy(reinterpret_cast<char*>(c.card), "USB Video: USB Video");
        std::strcpy(reinterpret_cast<char*>(c.bus_info), "usb-0000:00:14.0-2");
        c.capabilities = capabilities;
        c.device_caps = deviceCaps;
        return c;
    };
    const uint32_t all = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING | V4L2_CAP_DEVICE_CAPS;
    // A webcam's two nodes: the picture node, and its metadata-only twin.
    auto picture = FLKV4L2Node::fromCapability("/dev/video0", caps(all, V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING));
    auto metadata = FLKV4L2Node::fromCapability("/dev/video1", caps(all, V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING));
    ASSERT_TRUE(picture);
    EXPECT_FALSE(metadata);
    EXPECT_EQ(picture->card, "USB Video: USB Video");
    EXPECT_EQ(picture->uniqueIdentifier(), "v4l2:usb-0000:00:14.0-2");
    // Multi-planar capture counts; output-only does not; old drivers without device caps use the whole set.
    EXPECT_TRUE(FLKV4L2Node::capturesVideo(caps(V4L2_CAP_DEVICE_CAPS, V4L2_CAP_VIDEO_CAPTURE_MPLANE)));
    EXPECT_FALSE(FLKV4L2Node::capturesVideo(caps(V4L2_CAP_DEVICE_CAPS | V4L2_CAP_VIDEO_OUTPUT, V4L2_CAP_VIDEO_OUTPUT)));
    EXPECT_TRUE(FLKV4L2Node::capturesVideo(caps(V4L2_CAP_VIDEO_CAPTURE, 0)));
    // Nothing under a folder without nodes.
    EXPECT_TRUE(FLKV4L2Node::list(std::filesystem::temp_directory_path() / "no-such-dev-folder").empty());
}

TEST(FLKDeviceScreenRecorder, FirstPictureTestLooksAtTheTopLeftPixel) {
    auto pixel = [](uint8_t b, uint8_t g, uint8_t r) {
        FLKPixelBuffer buffer(2, 2);
        buffer.bgra = {b, g, r, 255, 0, 0, 0, 255, 0, 0, 0, 255, 0, 0, 0, 255};
        return buffer;
    };
    EXPECT_FALSE(FLKDeviceScreenRecorder::isRealPicture(pixel(0, 200, 200)));    // blue 0
    EXPECT_FALSE(FLKDeviceScreenRecorder::isRealPicture(pixel(200, 136, 200)));  // the placeholder green
    EXPECT_FALSE(FLKDeviceScreenRecorder::isRealPicture(pixel(200, 200, 0)));    // red 0
    EXPECT_TRUE(FLKDeviceScreenRecorder::isRealPicture(pixel(1, 0, 1)));         // green may be 0
    EXPECT_TRUE(FLKDeviceScreenRecorder::isRealPicture(pixel(200, 137, 200)));
    EXPECT_FALSE(FLKDeviceScreenRecorder::isRealPicture(FLKPixelBuffer{}));
}
