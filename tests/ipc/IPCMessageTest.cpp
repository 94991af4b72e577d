// Framing without sockets: the header, the parser's outcomes and log lines, the message
// dumps; and the socket streams over a socket pair.
#include "IpcTestSupport.h"

#include "ipc/IPCByteSource.h"
#include "ipc/IPCMessageParser.h"
#include "ipc/SocketStreambuf.h"

#include <gtest/gtest.h>

#include <sstream>

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
} // namespace

TEST(IPCHeader, EncodeAndDecode_UseFiveBigEndianIntegers) {
    IPCHeader header;
    header.length = 0x01020304;
    header.value = -2;
    char bytes[IPCHeader::size];
    header.encode(bytes);
    EXPECT_EQ(std::string(bytes, IPCHeader::size),
              std::string("\xC0\xCA\xC0\x1A\x01\x02\x03\x04\x00\x00\x00\x0C\x00\x00\x00\x0E"
                          "\xFF\xFF\xFF\xFE",
                          20));
    const IPCHeader back = IPCHeader::decode(bytes);
    EXPECT_EQ(back.start, IPCHeader::magic);
    EXPECT_EQ(back.length, 0x01020304);
    EXPECT_EQ(back.reserved, 12);
    EXPECT_EQ(back.code, 14);
    EXPECT_EQ(back.value, -2);
}

TEST(IPCMessageParser, GetMessage_GivesEachOutcomeWithItsLogLines) {
    struct Case {
        const char* name;
        std::string bytes;
        bool failAtEnd;
        bool message;
        const char* record; // null: no text
        bool readError;
        std::vector<std::string> logLines;
    } cases[] = {
        {"whole message",
         frameBytes(IPCHeader::magic, 5, 7, 9, "hello"),
         false,
         true,
         "hello",
         false,
         {"\nIPCMessageParser::getMessage got valid header on socket 0\n",
          "\nIPCMessageParser go whole message of 5 bytes on socket 0\n",
          "\nIPCMessageParser::getMessage received 'hello' on socket 0\n"}},
        {"no payload",
         frameBytes(IPCHeader::magic, 0, 1, 2, ""),
         false,
         true,
         nullptr,
         false,
         {"\nIPCMessageParser::getMessage received 'NULL' on socket 0\n"}},
        {"negative length",
         frameBytes(IPCHeader::magic, -4, 1, 2, "abcd"),
         false,
         true,
         nullptr,
         false,
         {"received 'NULL'"}},
        {"short header",
         std::string(7, 'x'),
         false,
         false,
         nullptr,
         false,
         {"\nIPCMessageParser got wrong number of bytes reading header, bytes read = '7' on "
          "socket 0\n"}},
        {"failed header",
         "",
         true,
         false,
         nullptr,
         false,
         {"bytes read = '-1' on socket 0\n", "\tSocketError is 104 on socket 0\n"}},
        {"wrong magic",
         frameBytes(0xDEADBEEF, 0, 0, 0, ""),
         false,
         false,
         nullptr,
         false,
         {"\nIPCMessageParser got invalid header, Ignoring on socket 0\n",
          "hdrBuf is00000000: de ad be ef"}},
        {"payload missing",
         frameBytes(IPCHeader::magic, 3, 0, 0, ""),
         true,
         true,
         nullptr,
         true,
         {"\nIPCMessageParser bytes < 0 reading data errCode = '104' on socket 0\n"}},
        {"payload cut short",
         frameBytes(IPCHeader::magic, 10, 0, 0, "abc"),
         false,
         true,
         "abc",
         false,
         {"go whole message of 3 bytes"}},
    };
    for (const Case& c : cases) {
        LogCapture log;
        IPCMemorySource source(c.bytes, c.failAtEnd);
        IPCMessageParser parser;
        bool readError = false;
        std::unique_ptr<IPCMessage> message(parser.getMessage(source, readError));
        EXPECT_EQ(message != nullptr, c.message) << c.name;
        EXPECT_EQ(readError, c.readError) << c.name;
        EXPECT_STREQ(parser.record() ? parser.record() : "<null>", c.record ? c.record : "<null>")
            << c.name;
        if (message && c.record) {
            EXPECT_STREQ(message->text(), c.record) << c.name;
        }
        for (const std::string& line : c.logLines)
            EXPECT_TRUE(log.contains(line)) << c.name << ": " << line << "\n" << log.captured();
    }
}

TEST(IPCMessageParser, Factory_ReceivesLengthCodeAndSecondValue) {
    const std::string bytes =
        frameBytes(IPCHeader::magic, 2, 41, 42, "ok") + frameBytes(IPCHeader::magic, 0, 43, 44, "");
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

TEST(IPCMessageParser, HugeClaimedLength_CostsOnlyTheBytesThatArrive) {
    const std::string bytes = frameBytes(IPCHeader::magic, 0x7FFFFFFF, 0, 0, "tiny");
    IPCMemorySource source(bytes);
    IPCMessageParser parser;
    bool readError = false;
    std::unique_ptr<IPCMessage> message(parser.getMessage(source, readError));
    ASSERT_TRUE(message);
    EXPECT_STREQ(message->text(), "tiny");
}

TEST(IPCMessageParser, SettersKeepSeparatorRecordAndDoneFlag) {
    IPCMessageParser parser;
    parser.setSeparater(';');
    parser.setRecord("abc");
    parser.setDone(true);
    EXPECT_EQ(parser.separater(), ';');
    EXPECT_STREQ(parser.record(), "abc");
    EXPECT_TRUE(parser.done());
    parser.setRecord(nullptr);
    EXPECT_EQ(parser.record(), nullptr);
}

TEST(IPCMessage, Dumps_PrintTheirExactTexts) {
    struct Case {
        std::unique_ptr<IPCMessage> message;
        IPCMessageKind kind;
        const char* dump;
    };
    char errorText[] = "disk full";
    Case cases[] = {
        {std::make_unique<IPCMessage>(), IPC_MESSAGE, "Dumping IPCMessage.\n"},
        {std::make_unique<IPCCommand>("beep"), IPC_COMMAND, "Dumping IPCCommand.\n"},
        {std::make_unique<IPCErrorMessage>(errorText), IPC_ERROR_MESSAGE,
         "Dumping IPCErrorMessage:disk full"},
        {std::make_unique<IPCStatusMessage>(FOUND_PORTFILE), IPC_STATUS_MESSAGE,
         "Dumping IPCStatusMessage:   v_code is 0 : Found portfile.\n"},
        {std::make_unique<IPCStatusMessage>(GO_TO_POLLING), IPC_STATUS_MESSAGE,
         "Dumping IPCStatusMessage:   v_code is 1 : Go to polling.\n"},
        {std::make_unique<IPCStatusMessage>(GO_TO_DISCONNECTING), IPC_STATUS_MESSAGE,
         "Dumping IPCStatusMessage:   v_code is 2 : Go to disconnecting.\n"},
        {std::make_unique<IPCStatusMessage>(CONNECTED_TO_SE), IPC_STATUS_MESSAGE,
         "Dumping IPCStatusMessage:   v_code is 3 : Connected to SE.\n"},
        {std::make_unique<IPCStatusMessage>(DISCONNECTED_FROM_SE), IPC_STATUS_MESSAGE,
         "Dumping IPCStatusMessage:   v_code is 4 : Disconnected from SE.\n"},
        {std::make_unique<IPCStatusMessage>(static_cast<IPC_STATUS_MSG_CODE>(5)),
         IPC_STATUS_MESSAGE, "Dumping IPCStatusMessage:   v_code is 5 :"},
    };
    for (const Case& c : cases) {
        LogCapture log;
        c.message->dump();
        EXPECT_EQ(log.captured(), c.dump);
        EXPECT_EQ(c.message->isa(), c.kind) << c.dump;
    }
    IPCErrorMessage error;
    char replaced[] = "other";
    error.setErrMessage(replaced);
    EXPECT_STREQ(error.text(), "other");
}

TEST(IPCCommand, WriteOn_WritesTheLengthPrefixedRequest) {
    std::ostringstream out;
    IPCCommand("beep").writeOn(out);
    EXPECT_EQ(out.str(), std::string("\0\0\0\4beep", 8));
    std::ostringstream empty;
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

    const std::string replies = frameBytes(IPCHeader::magic, 5, 14, 5, "first") +
                                frameBytes(IPCHeader::magic, 0, 14, 0, "") +
                                frameBytes(IPCHeader::magic, 6, 14, 6, "second") +
                                frameBytes(IPCHeader::magic, 4, 14, 4, "skip") +
                                frameBytes(0xBAD, 0, 0, 0, "");
    ASSERT_EQ(piSocket::sendAll(pair.peer, replies.data(), replies.size()), long(replies.size()));
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
    piSocket::close(pair.peer);
    pair.peer = piSocket::invalid;
    SocketOStream out(pair.ours);
    out << std::string(4096, 'x');
    out.flush();
    EXPECT_FALSE(out.good());
}
