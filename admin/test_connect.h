// The connection test: opens and closes one connection through the ODBC driver manager.
#pragma once

#include <sql.h>

#include <cstdint>

// What a driver's setup dialog knows of a data source; all that a test needs of it is the window.
struct DSNInfoStruct {
    void* window;
};

// One object serves one test, on one thread, which it blocks while the driver connects and prompts. A step has failed
// when it returns SQL_ERROR; all other codes, SQL_INVALID_HANDLE included, count as success.
class TestConnect {
public:
    // Whether the driver manager can take the connection string: with a FILEDSN= in it, one of 2,048 bytes or more ends
    // the process.
    static bool isTooLong(const char* connectionString);

    // Without a connection string: the attempt names no data source and fails.
    explicit TestConnect(DSNInfoStruct* info);
    // `window` is the parent of the driver's prompts. `connectionString` (ODBC SQLDriverConnect) is borrowed and must
    // outlive the test.
    TestConnect(void* window, char* connectionString);
    // Frees what the object owns; handles live only inside of testConnect().
    ~TestConnect();
    TestConnect(const TestConnect&) = delete;
    TestConnect& operator=(const TestConnect&) = delete;

    // 1 when a connection was made and closed. Otherwise 0: the driver's diagnostics have gone to the console, record
    // by record, or isUnanswered() when the person left the driver's prompt.
    int testConnect();

    // The steps of testConnect(): handles made, handles freed (1, or 0 after SQL_ERROR), diagnostics reported.
    int testInit();
    int testTerm();
    void testError();

    // The text of the last diagnostic record, cut to 255 bytes; "" when there was none. Valid while the object lives.
    char* getErrorMsgFromTestConnect() { return message_; }
    // Whether the attempt ended without an answer, as it does when the driver's prompt is cancelled.
    bool isUnanswered() const { return (flags_ & kUnanswered) != 0; }

private:
    static constexpr std::uint8_t kUnanswered = 0x01;

    DSNInfoStruct* info_ = nullptr;
    void* window_ = nullptr;
    SQLHENV environment_ = nullptr;
    SQLHDBC connection_ = nullptr;
    char* connectionString_ = nullptr;
    std::int16_t reserved_ = 0;
    char* ownedTexts_[4] = {};
    std::uint8_t flags_ = 0;
    char message_[256] = {};
};
