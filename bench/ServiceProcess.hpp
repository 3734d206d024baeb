#pragma once

#include "Measuring.hpp"

#include <kivo/simulator/IdentityService.hpp>

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <utility>
#include <vector>

namespace kivo::bench {

struct Post {
    std::string url;
    std::string body;
};

/// The simulated identity service in a child process, which the parent asks by single letters.
class ServiceProcess {
public:
    ServiceProcess() {
        int requests[2];
        int answers[2];
        if (pipe(requests) != 0 || pipe(answers) != 0) {
            giveUp("cannot make a pipe");
        }
        child_ = fork();
        if (child_ == 0) {
            dup2(requests[0], STDIN_FILENO);
            dup2(answers[1], STDOUT_FILENO);
            for (const int end : {requests[0], requests[1], answers[0], answers[1]}) {
                close(end);
            }
            serve();
        }
        close(requests[0]);
        close(answers[1]);
        toChild_ = requests[1];
        answers_ = fdopen(answers[0], "r");
        joinPage = line();
        trustedCertificates = line();
    }

    ServiceProcess(const ServiceProcess&) = delete;
    ServiceProcess& operator=(const ServiceProcess&) = delete;

    ~ServiceProcess() {
        close(toChild_);
        std::fclose(answers_);
        waitpid(child_, nullptr, 0);
    }

    /// The requests that the service has received.
    std::vector<Post> posts() {
        ask('r');
        std::vector<Post> all;
        for (auto count = std::stoul(line()); count > 0; --count) {
            auto url = line();
            all.push_back({std::move(url), line()});
        }
        return all;
    }

    /// Makes every further answer 20 ms late.
    void delayAnswers() {
        ask('d');
        line();
    }

    std::string joinPage;
    std::string trustedCertificates;

private:
    [[noreturn]] static void serve() {
        {
            simulator::IdentityService service;
            const auto page = service.joinPage();
            std::cout << page << '\n' << service.trustedCertificates().string() << std::endl;
            char command = 0;
            while (std::cin >> command) {
                if (command == 'd') {
                    using enum simulator::Endpoint;
                    for (const auto endpoint : {join, update, status, commit}) {
                        service.inject(endpoint, simulator::Fault::delay(std::chrono::milliseconds{20}));
                    }
                    std::cout << "done" << std::endl;
                    continue;
                }
                const auto requests = service.requests();
                std::cout << requests.size() << '\n';
                for (const auto& request : requests) {
                    std::cout << page.substr(0, page.find('/', 8)) << request.path << '\n' << request.body << std::endl;
                }
            }
        }
        std::exit(EXIT_SUCCESS);
    }

    void ask(char command) {
        const char text[] = {command, '\n'};
        if (write(toChild_, text, sizeof text) != sizeof text) {
            giveUp("the service has ended");
        }
    }

    std::string line() {
        std::string text;
        for (int c = std::fgetc(answers_); c != '\n'; c = std::fgetc(answers_)) {
            if (c == EOF) {
                giveUp("the service has ended");
            }
            text.push_back(static_cast<char>(c));
        }
        return text;
    }

    pid_t child_ = 0;
    int toChild_ = -1;
    std::FILE* answers_ = nullptr;
};

} // namespace kivo::bench
