// Framing without sockets: the parser's outcomes and log lines, its factory, the message
// dumps; and the socket streams over a socket pair.
#include "IpcTestSupport.h"

#include "ipc/IPCByteSource.h"
#include "ipc/IPCMessageParser.h"
#include "ipc/SocketStreambuf.h"

#include <gtest/gtest.h>

namespace {
// Records the length the factory was given.
struct RecordingParser : IPCMessageParser {
    IPCMessage* createMessage(int length, int code, int value) override {
        lastLength = length;
        return IPCMessageParser::createMessage(length, code, value);
    }
    int lastLength = -1;
};

const std::uint32_t magic = IPCHeader::magic;
} // namespace

// A claimed length beyond the bytes that arrive costs only those bytes.
TEST(IPCMessageParser, GetMessageGivesEachOutcomeWithItsLogLines) {
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
        {frameBytes(magic, 0, 7, 9, ""), false, true, false, nullptr,
         {parser + "::getMessage received 'NULL' on socket 0\n"}},
        {frameBytes(magic, -4, 7, 9, "abcd"), false, true, false, nullptr, {"received 'NULL'"}},
        {std::string(7, 'x'), false, false, false, nullptr,
         {parser + " got wrong number of bytes reading header, bytes read = '7' on socket 0\n"}},
        {"", true, false, false, nullptr,
         {"bytes read = '-1' on socket 0\n", "\tSocketError is 104 on socket 0\n"}},
        {frameBytes(0xDEADBEEF, 0, 0, 0, ""), false, false, false, nullptr,
         {parser + " got invalid header, Ignoring on socket 0\n",
          "hdrBuf is00000000: de ad be ef"}},
        {frameBytes(magic, 3, 7, 9, ""), true, true, true, nullptr,
         {parser + " bytes < 0 reading data errCode = '104' on socket 0\n"}},
        {frameBytes(magic, 10, 7, 9, "abc"), false, true, false, "abc",
         {"go whole message of 3 bytes"}},
        {frameBytes(magic, 0x7FFFFFFF, 7, 9, "tiny"), false, true, false, "tiny", {}}};
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.logLines.empty() ? "huge length" : c.logLines[0]);
        LogCapture log;
        IPCMemorySource source(c.bytes, c.failAtEnd);
        RecordingParser reader;
        bool readError = false;
        std::unique_ptr<IPCMessage> message(reader.getMessage(source, readError));
        EXPECT_EQ(message != nullptr, c.message);
        EXPECT_EQ(readError, c.readError);
        EXPECT_STREQ(reader.record() ? reader.record() : "<null>", c.record ? c.record : "<null>");
        if (message) {
            EXPECT_STREQ(message->text() ? message->text() : "<null>",
                         c.record ? c.record : "<null>");
            EXPECT_EQ(reader.lastLength, IPCHeader::decode(c.bytes.data()).length);
            EXPECT_EQ(message->code(), 7);
            EXPECT_EQ(message->value(), 9);
        }
        EXPECT_EQ(log.missing(c.logLines), "") << log.captured();
    }
}

// A status code past the named ones prints no name.
TEST(IPCMessage, DumpsPrintTheirExactTexts) {
    char errorText[] = "disk full";
    std::vector<std::tuple<std::shared_ptr<IPCMessage>, IPCMessageKind, std::string>> cases = {
        {std::make_shared<IPCMessage>(), IPC_MESSAGE, "Dumping IPCMessage.\n"},
        {std::make_shared<IPCCommand>("beep"), IPC_COMMAND, "Dumping IPCCommand.\n"},
        {std::make_shared<IPCErrorMessage>(errorText), IPC_ERROR_MESSAGE,
         "Dumping IPCErrorMessage:disk full"}};
    const char* const names[] = {" Found portfile.\n",       " Go to polling.\n",
                                 " Go to disconnecting.\n",  " Connected to SE.\n",
                                 " Disconnected from SE.\n", ""};
    for (int code = 0; code < 6; ++code)
        cases.emplace_back(
            std::make_shared<IPCStatusMessage>(IPC_STATUS_MSG_CODE(code)), IPC_STATUS_MESSAGE,
            "Dumping IPCStatusMessage:   v_code is " + std::to_string(code) + " :" + names[code]);
    for (const auto& [message, kind, dump] : cases) {
        LogCapture log;
        message->dump();
        EXPECT_EQ(log.captured(), dump);
        EXPECT_EQ(message->isa(), kind) << dump;
    }
}

// Replies are read one message at a time; an unread payload is skipped, a bad magic ends the
// stream. A write fails without a signal once the peer is gone.
TEST(SocketStreams, OStreamAndIStreamCarryRequestsAndFramedReplies) {
    SocketPair pair;
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
    pair.closePeer();
    EXPECT_EQ(in.nextMessage(1000), IPCSocketStreambuf::StreamEnded);
    SocketOStream out(pair.ours);
    out << std::string(4096, 'x');
    out.flush();
    EXPECT_FALSE(out.good());
}
