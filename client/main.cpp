#include "zuvCliHandler.h"

#include <exception>
#include <iostream>
#include <stdexcept>

int main(int argc, char** argv) {
    try {
        zuvCliHandler& handler = zuvCliHandler::getInstance();
        if (argc == 1) {
            handler.printUsage();
            return 0;
        }
        handler.parseArguments(argc, argv);
        return 0;
    } catch (const std::runtime_error& e) {
        std::cerr << "zuvCli Error: " << e.what() << std::endl;
    } catch (const std::exception& e) {
        // Nothing in the checks should let another kind through; end in order all the same.
        std::cerr << "zuvCli Error: Unexpected failure: " << e.what() << std::endl;
    } catch (...) {
        std::cerr << "zuvCli Error: Unexpected failure of unknown kind" << std::endl;
    }
    return 1;
}
