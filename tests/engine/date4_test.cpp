// Dates: Julian days, assign and back for every day of years 1 to 9999, pictures, names,
// today and the time.
#include <gtest/gtest.h>

#include <cstring>
#include <ctime>
#include <string>

#include "engine_test_support.h"

namespace {

using enginetest::FakeClock;

std::string assigned(int32_t julian) {
    char date[8];
    date4assign(date, julian);
    return std::string(date, 8);
}

// Days since 1 January 1970 of the proleptic Gregorian calendar, reckoned independently.
int64_t days_from_civil(int64_t y, int64_t m, int64_t d) {
    y -= m <= 2;
    const int64_t era = (y >= 0 ? y : y - 399) / 400;
    const int64_t yoe = y - era * 400;
    const int64_t doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
    const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468;
}

int64_t days_since_year_one(int64_t y, int64_t m, int64_t d) {
    return days_from_civil(y, m, d) - days_from_civil(1, 1, 1);
}

bool leap(int y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

TEST(Date4, TheConstantTables) {
    const int32_t days[14] = {0, 0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};
    for (int i = 0; i < 14; ++i) EXPECT_EQ(date4month_days[i], days[i]) << i;
    EXPECT_STREQ(date4day_names[0], "");
    EXPECT_STREQ(date4day_names[1], "Sunday");
    EXPECT_STREQ(date4day_names[4], "Wednesday");
    EXPECT_STREQ(date4day_names[7], "Saturday");
    EXPECT_STREQ(date4month_names[0], "");
    EXPECT_STREQ(date4month_names[1], "January");
    EXPECT_STREQ(date4month_names[9], "September");
    EXPECT_STREQ(date4month_names[12], "December");
    EXPECT_EQ(sizeof(date4day_names[0]), 12u);
    EXPECT_EQ(sizeof(date4month_names[0]), 10u);
}

TEST(Date4, EveryDayFromYearOneToYear9999GoesToItsJulianDayAndBack) {
    const int32_t first = 1721426;
    int year = 1, month = 1, day = 1;
    const int month_length[13] = {0, 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    int32_t julian = first;
    int checked = 0;
    for (;; ++julian) {
        char expected[40];
        std::snprintf(expected, sizeof(expected), "%04d%02d%02d", year, month, day);
        const std::string text = assigned(julian);
        if (text != expected) {
            ADD_FAILURE() << "julian " << julian << " gave " << text << ", expected " << expected;
            break;
        }
        if (date4julian(text.c_str()) != julian) {
            ADD_FAILURE() << "date " << text << " gave " << date4julian(text.c_str());
            break;
        }
        ++checked;
        if (year == 9999 && month == 12 && day == 31) break;
        const int length = month_length[month] + (month == 2 && leap(year) ? 1 : 0);
        if (++day > length) {
            day = 1;
            if (++month > 12) {
                month = 1;
                ++year;
            }
        }
    }
    EXPECT_EQ(julian, first + days_since_year_one(9999, 12, 31));
    EXPECT_EQ(checked, days_since_year_one(9999, 12, 31) + 1);
}

TEST(Date4, JulianDayOneOfYearOneIs1721426) {
    EXPECT_EQ(date4julian("00010101"), 1721426);
    EXPECT_EQ(date4julian("20000101"), 2451545);
    EXPECT_EQ(date4julian("19700101"), 2440588);
}

TEST(Date4, TheBlankDateIsDayZero) {
    EXPECT_EQ(date4julian("        "), 0);
    EXPECT_EQ(assigned(0), "        ");
    EXPECT_EQ(assigned(-1), "        ");
    EXPECT_EQ(assigned(-2000000), "        ");
}

TEST(Date4, EightZerosAreNotBlankAndMonthZeroIsInvalid) {
    EXPECT_EQ(date4julian("00000000"), -1);
}

TEST(Date4, LeapDays) {
    EXPECT_GT(date4julian("20000229"), 0);
    EXPECT_EQ(date4julian("19000229"), -1);
    EXPECT_EQ(date4julian("19960229"), date4julian("19960228") + 1);
    EXPECT_EQ(date4julian("20000301"), date4julian("20000229") + 1);
    EXPECT_EQ(date4julian("21000229"), -1);
}

TEST(Date4, InvalidDatesAreMinusOne) {
    EXPECT_EQ(date4julian("19981301"), -1);
    EXPECT_EQ(date4julian("19980132"), -1);
    EXPECT_EQ(date4julian("19980100"), -1);
    EXPECT_EQ(date4julian("19980431"), -1);
    EXPECT_EQ(date4julian("abcdefgh"), -1);
    EXPECT_EQ(date4julian("-0011231"), -1);  // a negative year
    EXPECT_EQ(date4julian(""), -1);          // a text shorter than a date
    EXPECT_EQ(date4julian("1998"), -1);
    EXPECT_EQ(date4julian(nullptr), -1);
}

TEST(Date4, YearZeroWithOtherTextGoesOn) {
    // The year reads as 0 and the text is not blank: the day is reckoned with the year-days
    // formula, whose divisions truncate (-1 / 4 is 0), so year 0 counts 365 days.
    EXPECT_EQ(date4julian("00000101"), 1721426 - 365);
    EXPECT_EQ(date4julian("    0101"), 1721426 - 365);
}

TEST(Date4, YearDays) {
    EXPECT_EQ(date4year_days(1), 0);
    EXPECT_EQ(date4year_days(2), 365);
    EXPECT_EQ(date4year_days(5), 1461);
    EXPECT_EQ(date4year_days(101), 36524);
    EXPECT_EQ(date4year_days(401), 146097);
    EXPECT_EQ(date4year_days(0), -365);
    EXPECT_EQ(date4year_days(2000), 730119);
}

TEST(Date4, DayOfYear) {
    EXPECT_EQ(date4day_of_year(2001, 1, 1), 1);
    EXPECT_EQ(date4day_of_year(2000, 2, 29), 60);
    EXPECT_EQ(date4day_of_year(1900, 2, 29), -1);
    EXPECT_EQ(date4day_of_year(2001, 3, 1), 60);
    EXPECT_EQ(date4day_of_year(2000, 3, 1), 61);
    EXPECT_EQ(date4day_of_year(2000, 12, 31), 366);
    EXPECT_EQ(date4day_of_year(2001, 12, 31), 365);
    EXPECT_EQ(date4day_of_year(2001, 0, 1), -1);
    EXPECT_EQ(date4day_of_year(2001, 13, 1), -1);
    EXPECT_EQ(date4day_of_year(2001, 4, 31), -1);
    EXPECT_EQ(date4day_of_year(2001, 4, 0), -1);
    EXPECT_EQ(date4day_of_year(-1, 4, 1), -1);
}

TEST(Date4, MonthDay) {
    int32_t month = -1, day = -1;
    EXPECT_EQ(date4month_day(2000, 60, &month, &day), 0);
    EXPECT_EQ(month, 2);
    EXPECT_EQ(day, 29);
    EXPECT_EQ(date4month_day(2000, 61, &month, &day), 0);
    EXPECT_EQ(month, 3);
    EXPECT_EQ(day, 1);
    EXPECT_EQ(date4month_day(2001, 59, &month, &day), 0);
    EXPECT_EQ(month, 2);
    EXPECT_EQ(day, 28);
    EXPECT_EQ(date4month_day(2000, 366, &month, &day), 0);
    EXPECT_EQ(month, 12);
    EXPECT_EQ(day, 31);
    EXPECT_EQ(date4month_day(2001, 366, &month, &day), -1);
    EXPECT_EQ(month, 0);
    EXPECT_EQ(day, 0);
    EXPECT_EQ(date4month_day(2000, 400, &month, &day), -1);
    EXPECT_EQ(date4month_day(2000, 1, nullptr, nullptr), 0);
}

TEST(Date4, DayOfWeek) {
    EXPECT_EQ(date4dow("19980304"), 4);  // a Wednesday
    EXPECT_STREQ(date4cdow("19980304"), "Wednesday");
    EXPECT_EQ(date4dow("20240107"), 1);
    EXPECT_STREQ(date4cdow("20240107"), "Sunday");
    EXPECT_EQ(date4dow("20240113"), 7);
    // The blank date is day 0 and so a Monday: kept as it stands.
    EXPECT_EQ(date4dow("        "), 2);
    EXPECT_STREQ(date4cdow("        "), "Monday");
    EXPECT_EQ(date4dow("19981301"), 0);
    EXPECT_STREQ(date4cdow("19981301"), "");
}

TEST(Date4, MonthNameAndParts) {
    EXPECT_STREQ(date4cmonth("19980304"), "March");
    EXPECT_STREQ(date4cmonth("19981204"), "December");
    EXPECT_STREQ(date4cmonth("19980004"), "");
    EXPECT_STREQ(date4cmonth("        "), "");
    EXPECT_STREQ(date4cmonth("19981304"), "");
    EXPECT_STREQ(date4cmonth(nullptr), "");
    EXPECT_EQ(date4day("19980304"), 4);
    EXPECT_EQ(date4month("19980304"), 3);
    EXPECT_EQ(date4year("19980304"), 1998);
    EXPECT_EQ(date4year("        "), 0);
}

TEST(Date4, DoubleMakesTheBlankDateSortLast) {
    EXPECT_EQ(date4double("        "), 1.0E100);
    EXPECT_EQ(date4double("20000101"), 2451545.0);
    EXPECT_EQ(date4double("20001301"), -1.0);
    double out = 0;
    date4double_to("19700101", &out);
    EXPECT_EQ(out, 2440588.0);
    date4double_to("19700101", nullptr);
}

std::string format(const char *date, const char *picture_text) {
    char picture[64];
    std::strcpy(picture, picture_text);
    char out[64];
    std::memset(out, '#', sizeof(out));
    date4format(date, out, picture);
    return std::string(out, std::strlen(picture));
}

TEST(Date4Format, DigitsByPicture) {
    EXPECT_EQ(format("19980304", "MM/DD/YY"), "03/04/98");
    EXPECT_EQ(format("19980304", "CCYY.MM.DD"), "1998.03.04");
    EXPECT_EQ(format("19980304", "DD-MM-CCYY"), "04-03-1998");
    EXPECT_EQ(format("19980304", "CCYYMMDD"), "19980304");
    // Four Y give the two digits of the year and keep the last two Y.
    EXPECT_EQ(format("19980304", "YYYY"), "98YY");
    // Other characters stay, upper-cased with the picture.
    EXPECT_EQ(format("19980304", "on MM/DD"), "ON 03/04");
    // A letter of the picture's alphabet is a digit place wherever it stands.
    EXPECT_EQ(format("19980304", "Date: MM/DD"), "0ATE: 03/DD");
    EXPECT_EQ(format("        ", "MM/DD/YY"), "  /  /  ");
}

TEST(Date4Format, ThePictureIsUpperCasedInPlaceAndTheTextEndsWithANul) {
    char picture[] = "mm/dd/yy";
    char out[16];
    std::memset(out, '#', sizeof(out));
    date4format("19980304", out, picture);
    EXPECT_STREQ(picture, "MM/DD/YY");
    EXPECT_STREQ(out, "03/04/98");
}

TEST(Date4Format, MonthNames) {
    EXPECT_EQ(format("19980304", "MMM DD, CCYY"), "Mar 04, 1998");
    EXPECT_EQ(format("19980904", "MMMMMMMMM"), "September");
    // A name shorter than its run: a blank behind it, the rest of the slot's NUL bytes.
    EXPECT_EQ(format("19980304", "MMMMMMMMM"), std::string("March \0\0\0", 9));
    EXPECT_EQ(format("19980504", "MMMM"), "May ");
    // Twelve M: the name in 12 columns, blanks from the tenth on.
    EXPECT_EQ(format("19980904", "MMMMMMMMMMMM"), "September   ");
    EXPECT_EQ(format("19980504", "MMMMMMMMMMMM"), std::string("May \0\0\0\0\0   ", 12));
    // A blank month blanks the run; other months are held to 1 .. 12.
    EXPECT_EQ(format("1998  04", "MMM/DD"), "   /04");
    EXPECT_EQ(format("19981304", "MMM"), "Dec");
    EXPECT_EQ(format("19980004", "MMM"), "Jan");
}

std::string init(const char *text, const char *picture_text) {
    char picture[64];
    std::strcpy(picture, picture_text);
    char date[9] = "########";
    date4init(date, text, picture);
    return std::string(date, 8);
}

TEST(Date4Init, ReadsDigitsByPicture) {
    EXPECT_EQ(init("03/04/98", "MM/DD/YY"), "19980304");
    EXPECT_EQ(init("1998.03.04", "CCYY.MM.DD"), "19980304");
    EXPECT_EQ(init("04-03-2024", "dd-mm-ccyy"), "20240304");
}

TEST(Date4Init, ATwoDigitYearAlwaysGetsTheCentury19) {
    EXPECT_EQ(init("01/02/03", "MM/DD/YY"), "19030102");
    EXPECT_EQ(init("01/02/45", "MM/DD/YY"), "19450102");
}

TEST(Date4Init, GroupsThatTookNothingGetTheirDefaults) {
    EXPECT_EQ(init("12/25", "MM/DD"), "19011225");
    EXPECT_EQ(init("1998", "CCYY"), "19980101");
}

TEST(Date4Init, AGroupThatTookOneCharacterIsFilledWithZero) {
    EXPECT_EQ(init("3/4/98", "M/D/YY"), "19983040");
}

TEST(Date4Init, BlankTextGivesTheBlankDate) {
    EXPECT_EQ(init("  /  /  ", "MM/DD/YY"), "        ");
    EXPECT_EQ(init("", "MM/DD/YY"), "        ");
}

TEST(Date4Init, MonthNames) {
    EXPECT_EQ(init("Mar 05 1998", "MMM DD CCYY"), "19980305");
    EXPECT_EQ(init("dec 31 1999", "MMM DD CCYY"), "19991231");
    EXPECT_EQ(init("DEC 31 1999", "MMM DD CCYY"), "19991231");
    // Fewer characters compare over what there is: the first month that matches wins.
    EXPECT_EQ(init("Ma  05 1998", "MMM DD CCYY"), "19980305");
    // An unknown name gives month 00, which the Julian day refuses.
    EXPECT_EQ(init("Xyz 05 1998", "MMM DD CCYY"), "19980005");
    EXPECT_EQ(date4julian(init("Xyz 05 1998", "MMM DD CCYY").c_str()), -1);
}

TEST(Date4Init, ExtraCharactersOfAGroupAreDroppedAndTheTextMayBeShort) {
    EXPECT_EQ(init("123456", "DDDDDD"), "19010112");
    EXPECT_EQ(init("03", "MM/DD/YY"), "19010301");
}

TEST(Date4, TodayTimeAndStampComeFromTheClock) {
    FakeClock clock(951782400 + 13 * 3600 + 5 * 60 + 9);  // some moment of 29 February 2000
    std::time_t now = static_cast<std::time_t>(FakeClock::now());
    std::tm local;
    localtime_r(&now, &local);
    char expected[48];
    std::snprintf(expected, sizeof(expected), "%04d%02d%02d", local.tm_year + 1900,
                  local.tm_mon + 1, local.tm_mday);
    char date[9] = {};
    date4today(date);
    EXPECT_EQ(std::string(date, 8), expected);
    std::snprintf(expected, sizeof(expected), "%02d:%02d:%02d", local.tm_hour, local.tm_min,
                  local.tm_sec);
    char time_text[9] = {};
    date4time_now(time_text);
    EXPECT_EQ(std::string(time_text, 8), expected);
    unsigned char stamp[3];
    u4yymmdd(stamp);
    EXPECT_EQ(stamp[0], static_cast<unsigned char>(local.tm_year));
    EXPECT_EQ(stamp[1], local.tm_mon + 1);
    EXPECT_EQ(stamp[2], local.tm_mday);
    date4today(nullptr);
    date4time_now(nullptr);
    u4yymmdd(nullptr);
}

TEST(Date4, TheDefaultClockIsTheSystemsTime) {
    const int64_t system = static_cast<int64_t>(std::time(nullptr));
    const int64_t engine = u4clock();
    EXPECT_LE(engine - system, 5);
    EXPECT_GE(engine - system, -5);
}

TEST(Date4, DelaySecondWaitsUntilTheClockMovesOn) {
    FakeClock clock(5000, 1);
    u4delay_sec();
    EXPECT_EQ(FakeClock::pauses(), 1);
    EXPECT_EQ(FakeClock::now(), 5001);
    u4wait();
    EXPECT_EQ(FakeClock::pauses(), 2);
}

}  // namespace
