#include <viewer/HeadsUp.h>

#include <agent/AgentNode.h>
#include <agent/Component.h>

#include <osg/Geode>
#include <osg/PolygonMode>
#include <osgDB/FileUtils>
#include <osgText/Font>
#include <osgViewer/Viewer>

#include <algorithm>
#include <list>

namespace tessarin::viewer {

namespace {

const float characterSize = 15;
const float margin = 14;

/// Null for OpenSceneGraph's own font, whose letters are coarse.
osg::ref_ptr<osgText::Font> findFont() {
    for (const char* const file :
         {"/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf", "/usr/share/fonts/TTF/DejaVuSans.ttf"})
        if (osgDB::fileExists(file))
            return osgText::readRefFontFile(file);
    return nullptr;
}

osg::ref_ptr<osgText::Text> makeText(osgText::Font* font, osgText::TextBase::AlignmentType alignment) {
    const osg::ref_ptr<osgText::Text> text = new osgText::Text;
    text->setDataVariance(osg::Object::DYNAMIC);
    text->setFont(font);
    text->setFontResolution(32, 32);
    text->setCharacterSize(characterSize);
    text->setAlignment(alignment);
    text->setColor(osg::Vec4(1, 1, 1, 1));
    text->setDrawMode(osgText::Text::TEXT | osgText::Text::FILLEDBOUNDINGBOX);
    text->setBoundingBoxColor(osg::Vec4(0.08f, 0.1f, 0.13f, 0.62f));
    text->setBoundingBoxMargin(8);
    return text;
}

/// What the file names hold is UTF-8.
void setText(osgText::Text& text, osg::Geode& geode, const std::string& content) {
    const bool isShown = geode.containsDrawable(&text);
    if (content.empty()) {
        if (isShown)
            geode.removeDrawable(&text);
        return;
    }
    const osgText::String wanted(content, osgText::String::ENCODING_UTF8);
    if (!std::equal(wanted.begin(), wanted.end(), text.getText().begin(), text.getText().end()))
        text.setText(wanted);
    if (!isShown)
        geode.addDrawable(&text);
}

} // namespace

HeadsUp::HeadsUp(osgViewer::Viewer& viewer) {
    const osg::ref_ptr<osgText::Font> font = findFont();
    agent = makeText(font, osgText::TextBase::LEFT_TOP);
    input = makeText(font, osgText::TextBase::RIGHT_TOP);
    message = makeText(font, osgText::TextBase::LEFT_BOTTOM);

    camera->setReferenceFrame(osg::Transform::ABSOLUTE_RF);
    camera->setClearMask(0);
    camera->setRenderOrder(osg::Camera::POST_RENDER);
    camera->setAllowEventFocus(false); // no ray is to be cast from it
    camera->setGraphicsContext(viewer.getCamera()->getGraphicsContext());
    osg::StateSet& state = *camera->getOrCreateStateSet();
    state.setMode(GL_LIGHTING, osg::StateAttribute::OFF);
    state.setMode(GL_DEPTH_TEST, osg::StateAttribute::OFF);
    // Letters stay whole in a picture of wires.
    state.setAttributeAndModes(new osg::PolygonMode, osg::StateAttribute::ON | osg::StateAttribute::PROTECTED);
    camera->addChild(geode);
    viewer.addSlave(camera, false);
    const osg::Viewport& viewport = *viewer.getCamera()->getViewport();
    resize(static_cast<int>(viewport.width()), static_cast<int>(viewport.height()));
}

void HeadsUp::showAgent(const std::string& text) {
    setText(*agent, *geode, text);
}

void HeadsUp::showInput(const std::string& text) {
    setText(*input, *geode, text);
}

void HeadsUp::showMessage(const std::string& text) {
    setText(*message, *geode, text);
}

void HeadsUp::resize(int newWidth, int newHeight) {
    if (width == newWidth && height == newHeight)
        return;
    width = newWidth;
    height = newHeight;
    const auto right = static_cast<float>(width), top = static_cast<float>(height);
    camera->setViewport(0, 0, width, height);
    camera->setProjectionMatrixAsOrtho2D(0, width, 0, height);
    agent->setPosition(osg::Vec3(margin, top - margin, 0));
    input->setPosition(osg::Vec3(right - margin, top - margin, 0));
    message->setPosition(osg::Vec3(margin, margin, 0));
}

std::string describe(agent::AgentNode& agent) {
    std::string text = agent.getName();
    agent.visitComponents([&](agent::Component* component) {
        text += "\n  " + component->getName();
        if (component->getName() != component->getClassName())
            text += std::string(" (") + component->getClassName() + ")";
        std::list<std::string> fields;
        component->getFieldNames(fields);
        for (const std::string& field : fields)
            text += "\n      " + field + " = " + component->getAsString(field);
    });
    return text;
}

} // namespace tessarin::viewer
