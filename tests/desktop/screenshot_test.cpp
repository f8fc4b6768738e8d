// Auto Screenshot: real captures of the launcher's Xvfb (1280 x 1024)
// written as PNG files, decoded again with libpng and compared pixel by
// pixel.

#include <cstdio>
#include <memory>

#include <png.h>
#include <wx/dir.h>
#include <wx/filename.h>

#include "core/clock.h"
#include "desktop/jobs/screenshot_job.h"
#include "x11_test_support.h"

namespace {

struct DecodedPng {
    bool ok = false;
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgb;

    std::uint32_t At(int x, int y) const
    {
        const std::size_t i = (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + x) * 3;
        return (static_cast<std::uint32_t>(rgb[i]) << 16) | (static_cast<std::uint32_t>(rgb[i + 1]) << 8) | rgb[i + 2];
    }
};

DecodedPng ReadPng(const wxString& path)
{
    DecodedPng decoded;
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.fn_str()))
        return decoded;
    image.format = PNG_FORMAT_RGB;
    decoded.width = static_cast<int>(image.width);
    decoded.height = static_cast<int>(image.height);
    decoded.rgb.resize(PNG_IMAGE_SIZE(image));
    decoded.ok = png_image_finish_read(&image, nullptr, decoded.rgb.data(), 0, nullptr) != 0;
    png_image_free(&image);
    return decoded;
}

// Files directly in `folder`, by name.
std::vector<wxString> FileNames(const wxString& folder)
{
    std::vector<wxString> names;
    wxDir dir(folder);
    wxString name;
    for (bool more = dir.IsOpened() && dir.GetFirst(&name, wxEmptyString, wxDIR_FILES); more;
         more = dir.GetNext(&name))
        names.push_back(name);
    std::sort(names.begin(), names.end());
    return names;
}

class ScreenshotTest : public DisplayJobTest {
protected:
    void SetUp() override
    {
        DisplayJobTest::SetUp();
        SetClock(&clock);
        // 08:00:59.500 local: one second later is the next minute.
        clock.Set(Local(2024, 3, 14, 8, 0, 59, 500));
    }
    void TearDown() override
    {
        SetClock(nullptr);
        DisplayJobTest::TearDown();
    }
    // Base folder, prefix, scale, capture range, range, notify.
    void Shoot(const wxString& base, const wxString& scale, const wxString& useRange, const wxString& range,
               const wxString& notify = "0")
    {
        RunJob(NJobTypeAutoScreenshot, {base, "cdrl", scale, useRange, range, notify});
    }
    wxString DayFolder() const { return temp.File("shots/2024-03-14"); }

    TempDir temp;
    ManualClock clock;
};

TEST(ScreenshotRect, OnlyWidthAndHeightAreScaledAndWhatCannotBeCapturedIsRefused)
{
    struct Case {
        const char* scale;
        const char* useRange;
        const char* range;
        CaptureRect rect;
        const char* says;  // the problem, when refused
    };
    const Case cases[] = {
        {"100", "1", "100 50 210 100", {100, 50, 210, 100}, ""},
        {"200", "1", "10 20 300 200", {10, 20, 600, 400}, ""},
        // The whole screen (1000 x 800 here) unless the range is chosen.
        {"150", "0", "10 20 30 40", {0, 0, 1500, 1200}, ""},
        {"50", "", "", {0, 0, 500, 400}, ""},
        {"100", "1", "10 20 300", {}, "is not four whole numbers"},
        {"100", "1", "10 20 wide 200", {}, "is not four whole numbers"},
        {"100", "1", "10.5 20 300 200", {}, "is not four whole numbers"},
        {"100", "1", "0 0 0 100", {}, "nothing to capture"},
        {"100", "1", "0 0 100 -5", {}, "nothing to capture"},
        {"1", "1", "0 0 99 99", {}, "nothing to capture"},  // 99 * 1 / 100 is 0
        {"-50", "1", "0 0 100 100", {}, "is not a whole number of percent"},
        {"abc", "1", "0 0 100 100", {}, "is not a whole number of percent"},
        {"100", "1", "0 0 20000 10", {}, "too large"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.scale) + " / " + c.range);
        wxString problem;
        const std::optional<CaptureRect> rect = ScreenshotRect(1000, 800, c.scale, c.useRange, c.range, problem);
        ASSERT_EQ(rect.has_value(), c.says[0] == 0) << problem;
        if (rect) {
            EXPECT_EQ(std::vector<long>({rect->left, rect->top, rect->width, rect->height}),
                      std::vector<long>({c.rect.left, c.rect.top, c.rect.width, c.rect.height}));
        } else {
            EXPECT_TRUE(problem.Contains(c.says)) << problem;
        }
    }
}

TEST_F(ScreenshotTest, ARangeCapturesExactlyThePaintedAreaAndOffScreenPixelsAreBlack)
{
    TestWindowOptions red;
    red.x = 100;
    red.y = 50;
    red.width = 200;
    red.height = 100;
    red.rgb = 0xff0000;
    red.overrideRedirect = true;
    TestWindow window(red);
    TestWindowOptions blue = red;
    blue.x = 300;  // right beside it
    blue.rgb = 0x0000ff;
    TestWindow neighbour(blue);
    Shoot(temp.File("shots"), "100", "1", "100 50 210 100");
    DecodedPng png = ReadPng(DayFolder() + "/cdrl-03140801_00.png");
    ASSERT_TRUE(png.ok);
    ASSERT_EQ(png.width, 210);
    ASSERT_EQ(png.height, 100);
    for (int y = 0; y < png.height; ++y) {
        for (int x = 0; x < png.width; ++x) {
            ASSERT_EQ(png.At(x, y), x < 200 ? 0xff0000u : 0x0000ffu) << "pixel " << x << "," << y;
        }
    }

    // A range reaching past the bottom right corner keeps its size; what lies
    // outside the screen is black.
    TestWindowOptions corner = red;
    corner.x = kScreenWidth - 24;
    corner.y = kScreenHeight - 20;
    corner.width = 24;
    corner.height = 20;
    corner.rgb = 0xffffff;
    TestWindow cornerWindow(corner);
    Shoot(temp.File("shots"), "100", "1", wxString::Format("%d %d 100 60", kScreenWidth - 24, kScreenHeight - 20));
    png = ReadPng(DayFolder() + "/cdrl-03140801_00_.png");
    ASSERT_TRUE(png.ok);
    ASSERT_EQ(png.width, 100);
    ASSERT_EQ(png.height, 60);
    EXPECT_EQ(png.At(0, 0), 0xffffffu);
    EXPECT_EQ(png.At(23, 19), 0xffffffu);
    EXPECT_EQ(png.At(24, 0), 0u);
    EXPECT_EQ(png.At(0, 20), 0u);
    EXPECT_EQ(png.At(99, 59), 0u);

    // The whole screen, scaled.
    Shoot(temp.File("shots"), "50", "0", "");
    png = ReadPng(DayFolder() + "/cdrl-03140801_00__.png");
    ASSERT_TRUE(png.ok);
    EXPECT_EQ(png.width, kScreenWidth / 2);
    EXPECT_EQ(png.height, kScreenHeight / 2);
    EXPECT_TRUE(messages.All().empty());
}

TEST_F(ScreenshotTest, NamesTakeTheMomentOneSecondAheadAndNeverOverwrite)
{
    const wxString base = temp.File("shots");
    Shoot(base, "100", "1", "0 0 8 8");
    // The same folder written with a trailing separator, in the same second.
    Shoot(base + "/", "100", "1", "0 0 8 8", "1");
    clock.Advance(400);  // 08:01:00.900: still the same second
    Shoot(base, "100", "1", "0 0 8 8");

    EXPECT_EQ(FileNames(DayFolder()),
              (std::vector<wxString>{"cdrl-03140801_00.png", "cdrl-03140801_00_.png", "cdrl-03140801_00__.png"}));
    const std::vector<std::string> notices = messages.Texts(RecordedMessage::Kind::Notice);
    ASSERT_EQ(notices.size(), 1u);
    EXPECT_EQ(notices[0], "A screenshot was saved as:\n " + (DayFolder() + "/cdrl-03140801_00_.png").utf8_string());

    // Shortly before midnight the picture belongs to the next day.
    clock.Set(Local(2024, 12, 31, 23, 59, 59, 0));
    Shoot(base, "100", "1", "0 0 8 8");
    EXPECT_EQ(FileNames(temp.File("shots/2025-01-01")), std::vector<wxString>{"cdrl-01010000_00.png"});
}

TEST_F(ScreenshotTest, MissingFoldersAreMadeAndAnImpossibleOneEndsQuietly)
{
    Shoot(temp.File("a/b/shots"), "100", "1", "0 0 4 4", "1");
    EXPECT_EQ(FileNames(temp.File("a/b/shots/2024-03-14")), std::vector<wxString>{"cdrl-03140801_00.png"});

    // A folder under a plain file cannot exist.
    WriteFileBytes(temp.File("plain"), "x");
    Shoot(temp.File("plain/shots"), "100", "1", "0 0 4 4", "1");
    EXPECT_EQ(messages.Texts(RecordedMessage::Kind::Notice).size(), 1u);  // only the first one's
    EXPECT_TRUE(Boxes().empty());
    EXPECT_TRUE(log.Has("Screenshot not saved"));
}

TEST_F(ScreenshotTest, ABadRangeIsRefusedWithAMessageAndNoFile)
{
    Shoot(temp.File("shots"), "100", "1", "10 20 300");
    const std::vector<std::string> boxes = Boxes();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_NE(boxes[0].find("is not four whole numbers"), std::string::npos) << boxes[0];
    EXPECT_FALSE(wxFileName::DirExists(temp.File("shots")));
    EXPECT_TRUE(log.Has("[JID_7] Auto Screenshot: the range \"10 20 300\""));
}

}  // namespace
