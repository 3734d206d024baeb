// A program that sends one POST by libcurl and ends. usage: kivo-start-bare PAGE CERTIFICATES FOLDER
#include "BareCurl.hpp"

#include <cstdlib>
#include <string>

using namespace kivo::bench;

int main(int argc, char** argv) {
    if (argc != 4) {
        giveUp("wants a page, certificates and a folder");
    }
    Handle handle{argv[2]};
    const Post post{argv[1], R"({"kivo-action":"init","kivo-init-code":"123456"})"};
    if (curl_easy_perform(handle.prepare(post)) != CURLE_OK) {
        giveUp("the request failed");
    }
    return EXIT_SUCCESS;
}
