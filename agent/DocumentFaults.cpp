#include <agent/DocumentFaults.h>

#include <xml_parser/XMLNode.h>

#include <log4cpp/NDC.hh>

namespace tessarin::agent {

using xml_parser::XMLNode;

static thread_local DocumentPass* currentPass = nullptr;
static thread_local const XMLNode* currentElement = nullptr;

// Each ends before the one around it.
#if defined(__GNUC__) && !defined(__clang__)
#    pragma GCC diagnostic ignored "-Wdangling-pointer"
#endif
DocumentPass::DocumentPass() : outer(currentPass) {
    currentPass = this;
}

DocumentPass::~DocumentPass() {
    currentPass = outer;
}

bool DocumentPass::isNewFault(const XMLNode& element) {
    return !currentPass || currentPass->faulty.insert(&element).second;
}

ElementInWork::ElementInWork(const XMLNode& element) : outer(currentElement) {
    currentElement = &element;
}

ElementInWork::~ElementInWork() {
    currentElement = outer;
}

std::string placeOf(const XMLNode& element) {
    const std::string place = element.getPlace();
    return place.empty() ? place : " (" + place + ')';
}

std::string placeInWork() {
    return currentElement ? placeOf(*currentElement) : std::string();
}

PlaceAsContext::PlaceAsContext() {
    const std::string place = currentElement ? currentElement->getPlace() : std::string();
    isPushed = !place.empty();
    if (isPushed)
        log4cpp::NDC::push(place);
}

PlaceAsContext::~PlaceAsContext() {
    if (isPushed)
        log4cpp::NDC::pop();
}

} // namespace tessarin::agent
