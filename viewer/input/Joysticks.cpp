#include <viewer/input/Joysticks.h>

#include <agent/Input.h>
#include <logging/Log.h>
#include <logging/Logger.h>

#include <SDL.h>

#include <algorithm>
#include <vector>

namespace tessarin::viewer {

using agent::Input;

namespace {

struct CloseJoystick {
    void operator()(SDL_Joystick* joystick) const { SDL_JoystickClose(joystick); }
};

/// One that is plugged in, or the number of one that was.
struct Device {
    std::unique_ptr<SDL_Joystick, CloseJoystick> joystick;
    SDL_JoystickID id = -1;
};

float axisValue(Sint16 value) {
    return std::max(-1.0f, static_cast<float>(value) / 32767.0f);
}

} // namespace

class Joysticks::Devices {
public:
    Devices();
    ~Devices();
    Devices(const Devices&) = delete;
    Devices& operator=(const Devices&) = delete;

    void take(const SDL_Event& event);

    bool isStarted = false;

private:
    void plugIn(int deviceIndex);
    void unplug(SDL_JoystickID id);
    int numberOf(SDL_JoystickID id) const;

    std::vector<Device> devices; // by their numbers
};

Joysticks::Devices::Devices() {
    SDL_SetMainReady();
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    // There is no window of SDL's that could have the focus.
    SDL_SetHint(SDL_HINT_JOYSTICK_ALLOW_BACKGROUND_EVENTS, "1");
    isStarted = SDL_InitSubSystem(SDL_INIT_JOYSTICK) == 0;
    if (!isStarted)
        TESSARIN_LOG(logging::Logger::instance()->getCategory("viewer", true), logging::Logger::errorLevel,
                     "joysticks can't be used: " << SDL_GetError());
}

Joysticks::Devices::~Devices() {
    devices.clear();
    if (isStarted)
        SDL_QuitSubSystem(SDL_INIT_JOYSTICK);
}

void Joysticks::Devices::take(const SDL_Event& event) {
    Input& input = *Input::instance();
    switch (event.type) {
    case SDL_JOYDEVICEADDED:
        plugIn(event.jdevice.which);
        break;
    case SDL_JOYDEVICEREMOVED:
        unplug(event.jdevice.which);
        break;
    case SDL_JOYBUTTONDOWN:
        input.pressJoystickButton(numberOf(event.jbutton.which), event.jbutton.button);
        break;
    case SDL_JOYBUTTONUP:
        input.releaseJoystickButton(numberOf(event.jbutton.which), event.jbutton.button);
        break;
    case SDL_JOYAXISMOTION:
        input.setJoystickAxisValue(numberOf(event.jaxis.which), event.jaxis.axis, axisValue(event.jaxis.value));
        break;
    case SDL_JOYHATMOTION: {
        const int number = numberOf(event.jhat.which);
        const int axis = SDL_JoystickNumAxes(SDL_JoystickFromInstanceID(event.jhat.which)) + 2 * event.jhat.hat;
        const auto held = [&](int direction) { return (event.jhat.value & direction) != 0 ? 1.0f : 0.0f; };
        input.setJoystickAxisValue(number, axis, held(SDL_HAT_RIGHT) - held(SDL_HAT_LEFT));
        input.setJoystickAxisValue(number, axis + 1, held(SDL_HAT_UP) - held(SDL_HAT_DOWN));
        break;
    }
    default:
        break;
    }
}

void Joysticks::Devices::plugIn(int deviceIndex) {
    Device device;
    device.joystick.reset(SDL_JoystickOpen(deviceIndex));
    device.id = SDL_JoystickInstanceID(device.joystick.get());
    if (!device.joystick || numberOf(device.id) >= 0)
        return;
    const auto free = std::find_if(devices.begin(), devices.end(), [](const Device& each) { return !each.joystick; });
    if (free == devices.end())
        devices.push_back(std::move(device));
    else
        *free = std::move(device);
}

void Joysticks::Devices::unplug(SDL_JoystickID id) {
    const int number = numberOf(id);
    if (number < 0)
        return;
    Device& device = devices[static_cast<std::size_t>(number)];
    SDL_Joystick* const joystick = device.joystick.get();
    for (int button = 0; button < SDL_JoystickNumButtons(joystick); ++button)
        Input::instance()->releaseJoystickButton(number, button);
    const int axes = SDL_JoystickNumAxes(joystick) + 2 * SDL_JoystickNumHats(joystick);
    for (int axis = 0; axis < axes; ++axis)
        Input::instance()->setJoystickAxisValue(number, axis, 0);
    device = Device();
}

int Joysticks::Devices::numberOf(SDL_JoystickID id) const {
    const auto found = std::find_if(devices.begin(), devices.end(),
                                    [&](const Device& each) { return each.joystick && each.id == id; });
    return found == devices.end() ? -1 : static_cast<int>(found - devices.begin());
}

Joysticks::Joysticks() : devices(std::make_unique<Devices>()) {}

Joysticks::~Joysticks() = default;

void Joysticks::poll() {
    if (!devices->isStarted)
        return;
    SDL_Event event;
    while (SDL_PollEvent(&event) != 0)
        devices->take(event);
}

} // namespace tessarin::viewer
