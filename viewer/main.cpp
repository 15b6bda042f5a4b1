#include <viewer/Application.h>

#include <iostream>

int main(int argumentCount, char** arguments) {
    return tessarin::viewer::Application(std::cout, std::cerr).run(argumentCount, arguments);
}
