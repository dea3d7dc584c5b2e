// orvane-trial-tracker FOLDER SEED STEPS: tracks a busy user into real files and prints the number of each
// save once it is complete; then waits to be killed.

#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <iostream>
#include <string>

#include "trials/busy_user.h"
#include "trials/desk.h"

int main(int argc, char** argv) {
    using namespace orvane;
    if (argc != 4) {
        std::cerr << "usage: orvane-trial-tracker FOLDER SEED STEPS\n";
        return 2;
    }
    // Nobody else would end it.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    trials::Desk desk(argv[1], {});
    OrvaneManagedObjectContext* context = desk.context();
    if (!context) return 1;
    std::uint64_t saves = 0;
    context->notificationCenter().addObserver(
        &saves, [&](const Notification&) { std::cout << ++saves << std::endl; },
        NSManagedObjectContextDidSaveNotification);
    trials::BusyUser user(desk, std::stoull(argv[2]));
    user.begin();
    for (int step = std::stoi(argv[3]); step > 0; --step) user.work();
    pause();
    return 0;
}
