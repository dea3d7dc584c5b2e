#include "util/day_boundaries.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <cmath>
#include <limits>
#include <string>

namespace orvane {
namespace {

// Zones are written as POSIX rules, so that the tests need no time zone database.
constexpr const char* eastern = "EST5EDT,M3.2.0,M11.1.0";
constexpr const char* overMidnight = "STD3DST,M11.1.0/0,M2.3.0/0";   // 00:00 to 01:00, 00:00 to 23:00
constexpr const char* afterMidnight = "STD5DST,M3.2.0/0,M11.1.0/1";  // 00:00 to 01:00, 01:00 to 00:00
constexpr const char* minutePastMidnight = "STD3:30DST,M3.2.0/0:01,M11.1.0/0:01";
constexpr const char* beforeMidnight = "STD0DST,M3.2.0/23:30,M11.1.0/0:30";  // 23:30 to 00:30, 00:30 to 23:30
constexpr const char* dateLine = "STD11DST-13,M3.1.0/0,M10.1.0/0";           // skips one day, repeats another

class DayBoundaries : public testing::Test {
  protected:
    void TearDown() override {
        if (former_.empty())
            unsetenv("TZ");
        else
            setenv("TZ", former_.c_str(), 1);
        tzset();
    }

    static void setZone(const char* zone) { setenv("TZ", zone, 1); }

  private:
    std::string former_ = getenv("TZ") ? getenv("TZ") : "";
};

Date utc(const char* text, double fraction = 0) {
    struct tm fields {};
    EXPECT_NE(strptime(text, "%Y-%m-%d %H:%M:%S", &fields), nullptr) << text;
    return dateFromSecondsSinceEpoch(static_cast<double>(timegm(&fields)) + fraction);
}

std::string text(Date date) {
    const auto seconds = static_cast<time_t>(secondsSinceEpoch(date));
    EXPECT_EQ(static_cast<double>(seconds), secondsSinceEpoch(date)) << "carries a fraction";
    struct tm fields;
    gmtime_r(&seconds, &fields);
    char buffer[64];
    strftime(buffer, sizeof buffer, "%Y-%m-%d %H:%M:%S", &fields);
    return buffer;
}

TEST_F(DayBoundaries, daysReachFromTheirFirstToTheirLastMoment) {
    const struct {
        const char* zone;
        const char* moment;
        double fraction;
        const char* start;
        const char* end;
    } cases[] = {
        {"UTC0", "2026-03-02 14:37:12", 0.64, "2026-03-02 00:00:00", "2026-03-02 23:59:59"},
        {"UTC0", "2026-03-02 23:59:59", 0.7, "2026-03-02 00:00:00", "2026-03-02 23:59:59"},
        {"UTC0", "1969-12-31 23:59:59", 0.5, "1969-12-31 00:00:00", "1969-12-31 23:59:59"},
        {"UTC0", "1582-10-10 00:00:00", -0.25, "1582-10-09 00:00:00", "1582-10-09 23:59:59"},
        {"XXX-5:45", "2026-03-02 19:00:00", 0, "2026-03-02 18:15:00", "2026-03-03 18:14:59"},
        {eastern, "2026-03-02 03:00:00", 0, "2026-03-01 05:00:00", "2026-03-02 04:59:59"},
        // 23 and 25 hours
        {eastern, "2026-03-08 12:00:00", 0, "2026-03-08 05:00:00", "2026-03-09 03:59:59"},
        {eastern, "2026-11-01 12:00:00", 0, "2026-11-01 04:00:00", "2026-11-02 04:59:59"},
        // midnight skipped, 23:59:59 repeated
        {overMidnight, "2018-11-04 15:00:00", 0, "2018-11-04 03:00:00", "2018-11-05 01:59:59"},
        {overMidnight, "2018-11-03 15:00:00", 0, "2018-11-03 03:00:00", "2018-11-04 02:59:59"},
        {overMidnight, "2018-02-18 01:59:59", 0, "2018-02-17 02:00:00", "2018-02-18 02:59:59"},
        // midnight repeated
        {afterMidnight, "2025-11-02 04:30:00", 0, "2025-11-02 04:00:00", "2025-11-03 04:59:59"},
        {afterMidnight, "2025-11-02 05:30:00", 0, "2025-11-02 04:00:00", "2025-11-03 04:59:59"},
        // both days have a moment on the wrong side of the other
        {minutePastMidnight, "2025-11-02 02:30:30", 0, "2025-11-02 02:30:00", "2025-11-03 03:29:59"},
        {minutePastMidnight, "2025-11-02 03:00:00", 0, "2025-11-01 02:30:00", "2025-11-02 03:29:59"},
        // 23:59:59 and midnight both skipped, both repeated
        {beforeMidnight, "2025-03-09 12:00:00", 0, "2025-03-09 00:00:00", "2025-03-09 23:29:59"},
        {beforeMidnight, "2025-03-10 12:00:00", 0, "2025-03-09 23:30:00", "2025-03-10 22:59:59"},
        {beforeMidnight, "2025-11-01 12:00:00", 0, "2025-10-31 23:00:00", "2025-11-01 23:59:59"},
        {beforeMidnight, "2025-11-02 12:00:00", 0, "2025-11-01 23:00:00", "2025-11-02 23:59:59"},
        // a day that is missing, and one that lasts two
        {dateLine, "2025-03-02 10:59:59", 0, "2025-03-01 11:00:00", "2025-03-02 10:59:59"},
        {dateLine, "2025-03-02 11:00:00", 0, "2025-03-02 11:00:00", "2025-03-03 10:59:59"},
        {dateLine, "2025-10-03 11:00:00", 0, "2025-10-03 11:00:00", "2025-10-05 10:59:59"},
        {dateLine, "2025-10-05 10:59:59", 0.9, "2025-10-03 11:00:00", "2025-10-05 10:59:59"},
    };
    for (const auto& each : cases) {
        setZone(each.zone);
        const Date moment = utc(each.moment, each.fraction);
        EXPECT_EQ(text(orvaneDayStart(moment)), each.start) << each.zone << ' ' << each.moment;
        EXPECT_EQ(text(orvaneDayEnd(moment)), each.end) << each.zone << ' ' << each.moment;
        EXPECT_EQ(orvaneDayStart(orvaneDayEnd(moment)), orvaneDayStart(moment));
        EXPECT_EQ(orvaneDayEnd(orvaneDayStart(moment)), orvaneDayEnd(moment));
    }
}

TEST_F(DayBoundaries, everyMomentLiesWithinItsDay) {
    for (const char* zone :
         {eastern, overMidnight, afterMidnight, minutePastMidnight, beforeMidnight, dateLine}) {
        setZone(zone);
        const double begin = secondsSinceEpoch(utc("1968-12-25 00:00:00"));
        for (double seconds = begin; seconds < begin + 500 * 86400; seconds += 7013.5) {
            const Date moment = dateFromSecondsSinceEpoch(seconds);
            ASSERT_LE(orvaneDayStart(moment), moment) << zone;
            ASSERT_GE(orvaneDayEnd(moment), orvaneSecondStart(moment)) << zone;
        }
    }
}

TEST_F(DayBoundaries, secondsAreCutOffTowardThePast) {
    const double cases[][2] = {{12.64, 12}, {12, 12}, {-0.25, -1}, {-1, -1}, {1.6e9 + 0.999999, 1.6e9}};
    for (const auto& [seconds, expected] : cases)
        EXPECT_EQ(secondsSinceEpoch(orvaneSecondStart(dateFromSecondsSinceEpoch(seconds))), expected);
}

TEST_F(DayBoundaries, datesOutsideTheCalendarStayAsTheyAre) {
    setZone(eastern);
    for (const double seconds :
         {1e300, -1e300, 9.1e15, -9.1e15, std::numeric_limits<double>::max(), HUGE_VAL, -HUGE_VAL}) {
        const Date date = dateFromSecondsSinceEpoch(seconds);
        EXPECT_EQ(orvaneDayStart(date), date);
        EXPECT_EQ(orvaneDayEnd(date), date);
        EXPECT_EQ(orvaneSecondStart(date), date);
    }
    EXPECT_TRUE(std::isnan(secondsSinceEpoch(orvaneDayStart(dateFromSecondsSinceEpoch(std::nan(""))))));
    // The last dates that tell seconds apart still have a day.
    for (const double seconds : {9e15, -9e15}) {
        const Date date = dateFromSecondsSinceEpoch(seconds);
        EXPECT_LT(orvaneDayStart(date), orvaneDayEnd(date));
    }
}

}  // namespace
}  // namespace orvane
