// Auto Screenshot: real captures of the launcher's Xvfb (1280 x 1024),
// decoded again with libpng and compared pixel by pixel.

#include <png.h>
#include <wx/dir.h>
#include <wx/filename.h>

#include "core/clock.h"
#include "core/session/session_context.h"
#include "desktop/jobs/screenshot_job.h"
#include "desktop/jobs/window_input_jobs.h"
#include "x11_test_support.h"

namespace {

struct Png {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels;  // 0xAARRGGBB
    std::uint32_t At(int x, int y) const { return pixels[std::size_t(y) * std::size_t(width) + x] & 0xffffffu; }
};

Png ReadPng(const wxString& path)
{
    Png png;
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (png_image_begin_read_from_file(&image, path.fn_str())) {
        image.format = PNG_FORMAT_BGRA;  // a little-endian 0xAARRGGBB
        png.pixels.resize(std::size_t(image.width) * image.height);
        if (png_image_finish_read(&image, nullptr, png.pixels.data(), 0, nullptr))
            std::tie(png.width, png.height) = std::make_pair(int(image.width), int(image.height));
        png_image_free(&image);
    }
    return png;
}

class ScreenshotTest : public DisplayJobTest {
protected:
    void SetUp() override
    {
        clock.Set(Local(2024, 3, 14, 8, 0, 59, 500));  // one second later is the next minute
        context.SetMessages(&messages);
        RegisterWindowAndInputJobActions(context.Actions());
    }
    // Base folder, prefix, scale, capture range, range, notify.
    void Shoot(const wxString& base, const wxString& scale, const wxString& useRange, const wxString& range,
               const wxString& notify = "0")
    {
        RunJob(NJobTypeAutoScreenshot, {base, "cdrl", scale, useRange, range, notify}, 7, "Test job", context);
    }

    TempDir temp;
    ManualClock clock;
    SessionContext context{clock};
};

TEST(ScreenshotRect, OnlyWidthAndHeightAreScaledAndWhatCannotBeCapturedIsRefused)
{
    const struct {
        const char* scale;
        const char* useRange;
        const char* range;
        CaptureRect rect;
        const char* says;  // the problem, when refused
    } cases[] = {
        {"100", "1", "100 50 210 100", {100, 50, 210, 100}, ""},
        {"200", "1", "10 20 300 200", {10, 20, 600, 400}, ""},
        // The whole screen (1000 x 800 here) unless the range is chosen.
        {"150", "0", "10 20 30 40", {0, 0, 1500, 1200}, ""},
        {"50", "", "", {0, 0, 500, 400}, ""},
        {"100", "1", "10 20 300", {}, "is not four whole numbers"},
        {"100", "1", "10.5 20 300 200", {}, "is not four whole numbers"},
        {"100", "1", "0 0 100 -5", {}, "nothing to capture"},
        {"1", "1", "0 0 99 99", {}, "nothing to capture"},  // 99 * 1 / 100 is 0
        {"-50", "1", "0 0 100 100", {}, "is not a whole number of percent"},
        {"100", "1", "0 0 20000 10", {}, "too large"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.scale) + " / " + c.range);
        wxString problem;
        const std::optional<CaptureRect> rect = ScreenshotRect(1000, 800, c.scale, c.useRange, c.range, problem);
        ASSERT_EQ(rect.has_value(), c.says[0] == 0) << problem;
        if (rect)
            EXPECT_EQ(std::vector<long>({rect->left, rect->top, rect->width, rect->height}),
                      std::vector<long>({c.rect.left, c.rect.top, c.rect.width, c.rect.height}));
        else
            EXPECT_TRUE(problem.Contains(c.says)) << problem;
    }
}

TEST_F(ScreenshotTest, CapturesExactPixelsNamedByTheNextSecondWithoutOverwriting)
{
    // Red, and blue right beside it, kept in place by any window manager.
    const TestWindow red({"", 100, 50, 200, 100, 0xff0000, true});
    const TestWindow blue({"", 300, 50, 200, 100, 0x0000ff, true});
    const wxString base = temp.File("shots");
    const wxString day = base + "/2024-03-14/";
    Shoot(base, "100", "1", "100 50 210 100");
    Png png = ReadPng(day + "cdrl-03140801_00.png");
    ASSERT_EQ(png.width, 210);
    ASSERT_EQ(png.height, 100);
    for (int y = 0; y < png.height; ++y)
        for (int x = 0; x < png.width; ++x)
            ASSERT_EQ(png.At(x, y), x < 200 ? 0xff0000u : 0x0000ffu) << "pixel " << x << "," << y;

    // The same folder with a trailing separator, in the same second; a range
    // past the bottom right corner keeps its size.
    Shoot(base + "/", "100", "1", "1256 1004 100 60", "1");
    png = ReadPng(day + "cdrl-03140801_00_.png");
    EXPECT_EQ(std::make_pair(png.width, png.height), std::make_pair(100, 60));
    EXPECT_EQ(messages.Texts(RecordedMessage::Kind::Notice),
              std::vector<std::string>{"A screenshot was saved as:\n " + (day + "cdrl-03140801_00_.png").utf8_string()});

    wxArrayString files;
    EXPECT_EQ(wxDir::GetAllFiles(day, &files), 2u);

    // A bad range: a message and no folder.
    Shoot(temp.File("bad"), "100", "1", "10 20 300");
    const std::vector<std::string> boxes = messages.Boxes();
    ASSERT_EQ(boxes.size(), 1u);
    EXPECT_NE(boxes[0].find("is not four whole numbers"), std::string::npos) << boxes[0];
    EXPECT_FALSE(wxFileName::DirExists(temp.File("bad")));
    EXPECT_TRUE(log.Has("[JID_7] Auto Screenshot: the range \"10 20 300\""));
}

}  // namespace
