// The SDR cache, loaded by two threads at once while a third polls a doorbell between its transactions.
#include "ipmiTestRig.h"

#include "ipmi/zuvSDRRepositoryCache.h"

#include <atomic>
#include <iomanip>
#include <thread>

TEST_F(IpmiTest, CacheReadsEachRecordInPiecesUnderAReservationOnce) {
    const std::string done = "DEBUG Completed reading all SDRs in the repository.";
    const std::string refused = "DEBUG Failed to build SDR Repository cache: (";
    const std::string sixteens = " 16 16 16 16 16 16 16 16 16 16 16 16 16 16 16";
    const struct {
        const char *name, *lengths, *answers;  // answers: command, answers of the RMC before, code, body length
        size_t loaded;
        std::string trace, log;
        int count = -1, failReceiveAfter = -1;  // -1: as the RMC has it
    } cases[] = {
        {"empty", "", "", 0, "I", "DEBUG Total SDR record count: [0]\n" + done},
        {"lengths 0, 16, 17", "0 16 17", "", 3, "I R 5 5 16 5 16 1",
         "DEBUG SDR Version: [0x51]\nDEBUG Total SDR record count: [3]\nDEBUG Supported operations: [0x02]\n"
         "DEBUG Reservation ID: [0x0001]\nDEBUG SDR [0x0000] read successful.\nDEBUG SDR [0x0017] read successful.\n"
         "DEBUG SDR [0x001e] read successful.\nDEBUG Completed reading all SDRs in the repository."},
        {"length 250, and 255 cut", "250 255 3", "", 3, "I R 5" + sixteens + " 10 5" + sixteens + " 15 5 3", done},
        {"end mark before the count", "0 0", "", 2, "I R 5 5", done, 9},
        {"count before the end mark", "0 0", "", 1, "I R 5", done, 1},
        {"reservation lost", "40 40 40", "0x23 6 0xC5 0", 3, "I R 5 16 16 8 5 16 16 R 5 16 16 8 5 16 16 8",
         "DEBUG Failed to retrieve SDR [0x0017] @ offset [0x15]: (IPMI command failed with: [197])!\nDEBUG Reservation "
         "cancelled/invalidated when reading SDR [1] @ [0x0017]! Retrying reservation.\n"
         "DEBUG Reservation ID: [0x0002]\nDEBUG Completed reading all SDRs in the repository."},
        {"reservation lost on every record", "3 17 3", "0x23 0 0xC5 0 0x23 3 0xC5 0 0x23 3 0xC5 0", 3,
         "I R 5 R 5 3 5 16 R 5 16 1 5 R 5 3", done},
        {"info refused", "3", "0x20 0 0xC1 0", 0, "I", refused + "IPMI command failed with: [193])!"},
        {"reservation refused", "3", "0x22 0 0xC1 0", 0, "I R", refused + "IPMI command failed with: [193])!"},
        {"new reservation refused", "3 3", "0x23 2 0xC5 0 0x22 1 0 0", 1, "I R 5 3 5 R",
         refused + "Incorrect response data size for Reserve SDR Repository!)!"},
        {"record not present", "3 3", "0x23 2 0xCB 0", 1, "I R 5 3 5",
         "DEBUG Failed to retrieve SDR [0x0017] @ offset [0x00]: (IPMI command failed with: [203])!\n"
         "DEBUG Failed to retrieve SDR [0x0017]: (IPMI command failed with: [203])!"},
        {"no next record id", "3 3", "0x23 2 0 1", 1, "I R 5 3 5",
         "DEBUG Failed to retrieve SDR [0x0017]: (Incorrect response data size for Get SDR!)!"},
        {"channel failure, loaded again", "17 17", "", 2, "I R 5 16 1 5 16 1 I R 5 16 1 5 16 1", done, -1, 7},
    };
    for (const auto& c : cases) {
#ifdef __SANITIZE_THREAD__
        if (c.failReceiveAfter >= 0) continue;  // TSan keeps a once flag taken after its function has thrown
#endif
        SCOPED_TRACE(c.name);
        reset();
        std::istringstream lengths(c.lengths), answers(c.answers);
        for (int length, i = 0; lengths >> length; ++i) rmc->addSdr(static_cast<uint8_t>(i + 1), counting(length));
        for (int command, before, code, length; answers >> std::setbase(0) >> command >> before >> code >> length;) {
            for (int i = 0; i < before; ++i) rmc->pushLogicAnswer(0x0A, static_cast<uint8_t>(command));
            rmc->pushResponse(0x0A, static_cast<uint8_t>(command), {static_cast<uint8_t>(code), counting(length)});
        }
        if (c.count >= 0) rmc->overrideRecordCount(static_cast<uint16_t>(c.count));
        if (c.failReceiveAfter >= 0) device->failNext(Step::Receive, 1, c.failReceiveAfter);
        zuvIPMI::SDRRepositoryCache cache(service.get());
        const zuvIPMI::SDRRepositoryCache& constant = cache;
        const std::string failedLoad = c.failReceiveAfter < 0 ? "" : thrown([&] { cache.begin(); });
        std::vector<Bytes> seen[2], expected;
        for (size_t i = 0; i < c.loaded; ++i) expected.emplace_back(rmc->sdrRecord(i)).resize(255, 0);
        std::atomic<bool> polled{false}, loaded{false};
        auto read = [&](std::vector<Bytes>* records) {
            for (const auto& r : constant) records->emplace_back(r.bytes, r.bytes + 255);
        };
        std::thread poller([&] {
            for (; !polled || !loaded; polled = true) service->checkDoorBell(DoorBellTelemetry);
        });
        while (!polled) std::this_thread::yield();
        std::thread reader(read, &seen[1]);
        read(&seen[0]);
        reader.join();
        loaded = true;
        poller.join();
        const long n = static_cast<long>(c.loaded);
        EXPECT_EQ(std::make_tuple(failedLoad, seen[0], seen[1], device->mostPending(), cache.end() - cache.begin(),
                                  cache.rend() - cache.rbegin(), constant.rend() - constant.rbegin()),
                  std::make_tuple(c.failReceiveAfter < 0 ? "" : "std::exception: std::exception", expected, expected,
                                  size_t{1}, n, n, n));
        // The repository traffic: I (info), R (reservation) and the size each Get SDR asks for.
        std::string trace;
        for (const zuvsim::Request& r : rmc->requests())
            if (r.netFn == 0x0A) trace += r.cmd == 0x20 ? " I" : r.cmd == 0x22 ? " R" : " " + std::to_string(r.data[5]);
        EXPECT_EQ(trace, " " + c.trace) << "no traffic after the load";
        EXPECT_EQ(logged(c.log + "\n" + done, "SDR_CACHE"), c.log);
    }
}
