#include <viewer/input/InputFeeder.h>

#include <viewer/Hand.h>
#include <viewer/input/KeyCodes.h>

#include <agent/Input.h>

#include <osgViewer/View>

namespace tessarin::viewer {

using agent::Input;
using Event = osgGA::GUIEventAdapter;

InputFeeder::~InputFeeder() = default;

void InputFeeder::beginFrame() {
    if (!isScrolling)
        return;
    isScrolling = false;
    notches = 0;
    Input::instance()->updateMouseScrollDelta(0);
    Input::instance()->setMouseScrolling(false);
}

void InputFeeder::releaseKeys() {
    for (const std::string& code : heldKeys)
        Input::instance()->releaseButton(code);
    heldKeys.clear();
}

void InputFeeder::releaseAll() {
    releaseKeys();
    for (const int button : heldMouseButtons)
        Input::instance()->releaseMouseButton(button);
    heldMouseButtons.clear();
}

bool InputFeeder::handle(const Event& event, osgGA::GUIActionAdapter& action, osg::Object*, osg::NodeVisitor*) {
    switch (event.getEventType()) {
    case Event::KEYDOWN:
    case Event::KEYUP:
        return handleKey(event);
    case Event::SCROLL:
        handleWheel(event);
        return false;
    case Event::PUSH:
        heldMouseButtons.insert(event.getButton());
        break;
    case Event::RELEASE:
        heldMouseButtons.erase(event.getButton());
        break;
    case Event::DRAG:
    case Event::MOVE:
    case Event::FRAME:
        break;
    default:
        return false;
    }
    if (const osgViewer::View* const view = dynamic_cast<osgViewer::View*>(&action))
        Hand::instance().aim(*view->getCamera(), event.getX(), event.getY());
    return false;
}

bool InputFeeder::handleKey(const Event& event) {
    const int key = event.getUnmodifiedKey() != 0 ? event.getUnmodifiedKey() : event.getKey();
    const std::string code = keyCode(key);
    if (event.getEventType() == Event::KEYDOWN) {
        heldKeys.insert(code);
        Input::instance()->pressButton(code);
    } else {
        heldKeys.erase(code);
        Input::instance()->releaseButton(code);
    }
    return reserved.count(code) > 0;
}

void InputFeeder::handleWheel(const Event& event) {
    const Event::ScrollingMotion motion = event.getScrollingMotion();
    if (motion == Event::SCROLL_UP || (motion == Event::SCROLL_2D && event.getScrollingDeltaY() > 0))
        ++notches;
    else if (motion == Event::SCROLL_DOWN || (motion == Event::SCROLL_2D && event.getScrollingDeltaY() < 0))
        --notches;
    isScrolling = true;
    Input::instance()->updateMouseScrollDelta(notches);
    Input::instance()->setMouseScrolling(true);
}

} // namespace tessarin::viewer
