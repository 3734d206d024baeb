#include "Models.hpp"

#include <cstddef>

namespace kivo::device::app {
namespace {

constexpr std::size_t usual = 2;

} // namespace

const std::vector<Model>& models() {
    static const std::vector<Model> all{
        {.name = "Small phone",
         .size = {.width = 320, .height = 568},
         .safeArea = {.top = 20, .left = 0, .bottom = 0, .right = 0},
         .cornerRadius = 6,
         .bezel = 14},
        {.name = "Phone with a frame",
         .size = {.width = 375, .height = 667},
         .safeArea = {.top = 20, .left = 0, .bottom = 0, .right = 0},
         .cornerRadius = 8,
         .bezel = 16},
        {.name = "Phone",
         .size = {.width = 390, .height = 844},
         .safeArea = {.top = 47, .left = 0, .bottom = 34, .right = 0},
         .safeAreaInLandscape = {.top = 0, .left = 47, .bottom = 21, .right = 47},
         .cornerRadius = 36,
         .bezel = 15,
         .hasCameraInDisplay = true},
        {.name = "Large phone",
         .size = {.width = 430, .height = 932},
         .safeArea = {.top = 54, .left = 0, .bottom = 34, .right = 0},
         .safeAreaInLandscape = {.top = 0, .left = 54, .bottom = 21, .right = 54},
         .cornerRadius = 36,
         .bezel = 15,
         .hasCameraInDisplay = true},
        {.name = "Tablet",
         .size = {.width = 820, .height = 1180},
         .safeArea = {.top = 24, .left = 0, .bottom = 20, .right = 0},
         .safeAreaInLandscape = {.top = 24, .left = 0, .bottom = 20, .right = 0},
         .cornerRadius = 20,
         .bezel = 28},
    };
    return all;
}

const Model& usualModel() {
    return models().at(usual);
}

} // namespace kivo::device::app
