// Framing without sockets: the header, the parser's outcomes and log lines, the message
// dumps; and the socket streams over a socket pair.
#include "IpcTestSupport.h"

#include "ipc/IPCByteSource.h"
#include "ipc/IPCMessageParser.h"
#include "ipc/SocketStreambuf.h"

#include <gtest/gtest.h>

#include <sstream>
#include <tuple>
#include <vector>

namespace {
class CountingParser : public IPCMessageParser {
public:
    int lastLength = -1;

protected:
    IPCMessage* createMessage(int length, int code, int value) override {
        lastLength = length;
        return IPCMessageParser::createMessage(length, code, value);
    }
};

const std::uint32_t magic = IPCHeader::magic;
} // namespace

TEST(IPCHeader, EncodeAndDecode_UseFiveBigEndianIntegers) {
    IPCHeader header;
    header.length = 0x01020304;
    header.value = -2;
    char bytes[IPCHeader::size];
    header.encode(bytes);
    EXPECT_EQ(
        std::string(bytes, IPCHeader::size),
        std::string("\xC0\xCA\xC0\x1A\x01\x02\x03\x04\0\0\0\x0C\0\0\0\x0E\xFF\xFF\xFF\xFE", 20));
    const IPCHeader back = IPCHeader::decode(bytes);
    EXPECT_EQ(back.start, magic);
    EXPECT_EQ(back.length, 0x01020304);
    EXPECT_EQ(back.reserved, 12);
    EXPECT_EQ(back.code, 14);
    EXPECT_EQ(back.value, -2);
}

// A claimed length beyond the bytes that arrive costs only those bytes.
TEST(IPCMessageParser, GetMessage_GivesEachOutcomeWithItsLogLines) {
    struct Case {
        std::string bytes;
        bool failAtEnd, message, readError;
        const char* record; // null: no text
        std::vector<std::string> logLines;
    };
    const std::string parser = "\nIPCMessageParser";
    // clang-format off
    const Case cases[] = {
        {frameBytes(magic, 5, 7, 9, "hello"), false, true, false, "hello",
         {parser + "::getMessage got valid header on socket 0\n",
          parser + " go whole message of 5 bytes on socket 0\n",
          parser + "::getMessage received 'hello' on socket 0\n"}},
        {frameBytes(magic, 0, 1, 2, ""), false, true, false, nullptr,
         {parser + "::getMessage received 'NULL' on socket 0\n"}},
        {frameBytes(magic, -4, 1, 2, "abcd"), false, true, false, nullptr, {"received 'NULL'"}},
        {std::string(7, 'x'), false, false, false, nullptr,
         {parser + " got wrong number of bytes reading header, bytes read = '7' on socket 0\n"}},
        {"", true, false, false, nullptr,
         {"bytes read = '-1' on socket 0\n", "\tSocketError is 104 on socket 0\n"}},
        {frameBytes(0xDEADBEEF, 0, 0, 0, ""), false, false, false, nullptr,
         {parser + " got invalid header, Ignoring on socket 0\n",
          "hdrBuf is00000000: de ad be ef"}},
        {frameBytes(magic, 3, 0, 0, ""), true, true, true, nullptr,
         {parser + " bytes < 0 reading data errCode = '104' on socket 0\n"}},
        {frameBytes(magic, 10, 0, 0, "abc"), false, true, false, "abc",
         {"go whole message of 3 bytes"}},
        {frameBytes(magic, 0x7FFFFFFF, 0, 0, "tiny"), false, true, false, "tiny", {}}};
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.logLines.empty() ? "huge length" : c.logLines[0]);
        LogCapture log;
        IPCMemorySource source(c.bytes, c.failAtEnd);
        IPCMessageParser reader;
        bool readError = false;
        std::unique_ptr<IPCMessage> message(reader.getMessage(source, readError));
        EXPECT_EQ(message != nullptr, c.message);
        EXPECT_EQ(readError, c.readError);
        EXPECT_STREQ(reader.record() ? reader.record() : "<null>", c.record ? c.record : "<null>");
        if (message && c.record) {
            EXPECT_STREQ(message->text(), c.record);
        }
        for (const std::string& line : c.logLines)
            EXPECT_TRUE(log.contains(line)) << line << "\n" << log.captured();
    }
}

TEST(IPCMessageParser, Factory_ReceivesLengthCodeAndSecondValue) {
    const std::string bytes = frameBytes(magic, 2, 41, 42, "ok") + frameBytes(magic, 0, 43, 44, "");
    IPCMemorySource source(bytes);
    CountingParser parser;
    bool readError = false;
    std::unique_ptr<IPCMessage> first(parser.getMessage(source, readError));
    ASSERT_TRUE(first);
    EXPECT_EQ(parser.lastLength, 2);
    EXPECT_EQ(first->code(), 41);
    EXPECT_EQ(first->value(), 42);
    std::unique_ptr<IPCMessage> second(parser.getMessage(source, readError));
    ASSERT_TRUE(second);
    EXPECT_EQ(second->text(), nullptr);
    EXPECT_EQ(second->code(), 43);
    EXPECT_EQ(parser.lastHeaderBytes(), 20);
    EXPECT_FALSE(parser.getMessage(source, readError)) << "the source is exhausted";
    EXPECT_EQ(parser.lastHeaderBytes(), 0);
}

TEST(IPCMessage, Dumps_PrintTheirExactTexts) {
    char errorText[] = "disk full";
    const std::tuple<std::shared_ptr<IPCMessage>, IPCMessageKind, const char*> cases[] = {
        {std::make_shared<IPCMessage>(), IPC_MESSAGE, "Dumping IPCMessage.\n"},
        {std::make_shared<IPCCommand>("beep"), IPC_COMMAND, "Dumping IPCCommand.\n"},
        {std::make_shared<IPCErrorMessage>(errorText), IPC_ERROR_MESSAGE,
         "Dumping IPCErrorMessage:disk full"}};

    for (const auto& [message, kind, dump] : cases) {
        LogCapture log;
        message->dump();
        EXPECT_EQ(log.captured(), dump);
        EXPECT_EQ(message->isa(), kind) << dump;
    }
    const char* const statusTexts[] = {" Found portfile.\n",       " Go to polling.\n",
                                       " Go to disconnecting.\n",  " Connected to SE.\n",
                                       " Disconnected from SE.\n", ""};
    for (int code = FOUND_PORTFILE; code <= 5; ++code) {
        LogCapture log;
        IPCStatusMessage status(static_cast<IPC_STATUS_MSG_CODE>(code));
        status.dump();
        EXPECT_EQ(log.captured(), "Dumping IPCStatusMessage:   v_code is " + std::to_string(code) +
                                      " :" + statusTexts[code]);
        EXPECT_EQ(status.isa(), IPC_STATUS_MESSAGE);
    }
    IPCErrorMessage error;
    char replaced[] = "other";
    error.setErrMessage(replaced);
    EXPECT_STREQ(error.text(), "other");
}

TEST(IPCCommand, WriteOn_WritesTheLengthPrefixedRequest) {
    std::ostringstream out, empty;
    IPCCommand("beep").writeOn(out);
    EXPECT_EQ(out.str(), std::string("\0\0\0\4beep", 8));
    IPCCommand(nullptr).writeOn(empty);
    EXPECT_EQ(empty.str(), std::string(4, '\0'));
}

TEST(SocketStreams, OStreamAndIStream_CarryRequestsAndFramedReplies) {
    SocketPair pair;
    SocketOStream out(pair.ours);
    out << "abc" << 12;
    EXPECT_EQ(piSocket::waitReadable(pair.peer, 20), 0) << "buffered until flushed";
    out.flush();
    char received[5];
    ASSERT_EQ(piSocket::receiveAll(pair.peer, received, 5), 5);
    EXPECT_EQ(std::string(received, 5), "abc12");

    ASSERT_TRUE(sendAll(pair.peer, replyFrame("first") + replyFrame("") + replyFrame("second") +
                                       replyFrame("skip") + frameBytes(0xBAD, 0, 0, 0, "")));
    IPCSocketIStream in(pair.ours);
    std::vector<std::string> texts;
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(in.nextMessage(1000), IPCSocketStreambuf::MessageReady);
        texts.emplace_back(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    EXPECT_EQ(texts, (std::vector<std::string>{"first", "", "second"}));
    ASSERT_EQ(in.nextMessage(1000), IPCSocketStreambuf::MessageReady);
    EXPECT_EQ(in.messageLength(), 4);
    EXPECT_EQ(in.get(), 's');
    EXPECT_EQ(in.nextMessage(1000), IPCSocketStreambuf::StreamEnded) << "bad magic after a skip";
    EXPECT_EQ(in.nextMessage(20), IPCSocketStreambuf::NoMessage);
    piSocket::shutdown(pair.peer);
    EXPECT_EQ(in.nextMessage(1000), IPCSocketStreambuf::StreamEnded);
}

TEST(SocketStreams, WriteToAClosedPeer_FailsTheStreamWithoutASignal) {
    SocketPair pair;
    pair.closePeer();
    SocketOStream out(pair.ours);
    out << std::string(4096, 'x');
    out.flush();
    EXPECT_FALSE(out.good());
}
