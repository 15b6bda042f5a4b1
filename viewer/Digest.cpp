#include <viewer/Digest.h>

#include <agent/AgentNode.h>

#include <cstring>

namespace tessarin::viewer {

namespace {

class Hash {
public:
    void add(const std::string& text) {
        add(text.size());
        for (const char c : text)
            addByte(static_cast<unsigned char>(c));
    }

    void add(double number) {
        std::uint64_t bits;
        static_assert(sizeof(bits) == sizeof(number));
        std::memcpy(&bits, &number, sizeof(bits));
        add(bits);
    }

    void add(std::uint64_t bits) {
        for (int shift = 0; shift < 64; shift += 8)
            addByte(static_cast<unsigned char>(bits >> shift));
    }

    std::uint64_t get() const { return value; }

private:
    void addByte(unsigned char byte) { value = (value ^ byte) * 0x100000001b3; }

    std::uint64_t value = 0xcbf29ce484222325;
};

void addBranch(agent::AgentNode& agent, Hash& hash) {
    hash.add(agent.getName());
    const gmtl::Matrix<double, 4, 4> pose = agent.getMatrix();
    for (unsigned row = 0; row < 4; ++row)
        for (unsigned column = 0; column < 4; ++column)
            hash.add(pose(row, column));
    hash.add(std::uint64_t{agent.getChildren().size()});
    for (agent::AgentNode* child : agent.getChildren())
        addBranch(*child, hash);
}

} // namespace

std::uint64_t digestOf(agent::AgentNode& root) {
    Hash hash;
    addBranch(root, hash);
    return hash.get();
}

} // namespace tessarin::viewer
