#pragma once
// Every harness's LLVMFuzzerInitialize (fuzzSetUp.cpp) moves it into the private test sandbox
// (tmpfs over /opt, /run, /tmp, /var/log, /dev; no syslog socket, so syslog lines go nowhere)
// and writes a configuration there that turns every log level on and sends the lines to
// /dev/null: each message is formatted, none is kept, nothing of the machine's is touched. Then
// it calls this, which a harness defines when it needs more.
extern "C" void zuvFuzzHarnessSetUp();
