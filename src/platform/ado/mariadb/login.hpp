#pragma once
// What the MySQL connection text asks for ("Driver=MySQL ODBC 5.1 Driver;
// DATABASE=...;SERVER=...;UID=...;PASSWORD=...;PORT=...;OPTION=...;"),
// read the way the driver of that name reads it.
#include <cstdint>
#include <string>

#include "zolsdk/platform/text.hpp"

namespace zolsdk::ado::detail {

// The bits of OPTION this backend acts on; the others shape an ODBC
// driver's cursors and catalog answers and mean nothing here.
namespace mysqlOption {
constexpr uint32_t FoundRows = 2;         // affected rows count the rows matched, not only those changed
constexpr uint32_t BigPackets = 8;        // statements and values of any size
constexpr uint32_t Compressed = 2048;     // compressed protocol
constexpr uint32_t MultiStatements = 67108864;
} // namespace mysqlOption

struct MariaDbLogin {
    std::string host;     // SERVER; empty or "localhost": the local socket
    std::string user;     // UID / USER
    std::string password; // PASSWORD / PWD
    std::string database; // DATABASE / DB
    std::string socket;   // SOCKET
    unsigned port = 3306; // PORT
    uint32_t option = 0;  // OPTION

    // Compression pays only across a network: on this host (loopback or
    // socket) it costs time and changes no result, so it stays off.
    bool Compress() const;
    bool OnThisHost() const;
};

// Reads the items of a connection text; the last of a repeated key wins,
// as ";UID=...;PWD=..." appended by Connection::Open must. Values may be
// wrapped in braces. Raises nothing: the server judges what is missing.
MariaDbLogin ReadMariaDbLogin(StringView connectionText);

} // namespace zolsdk::ado::detail
