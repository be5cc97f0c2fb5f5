/// A second implementation of the command tables' rules, as plain as possible: it is recursive, copies much, and takes
/// whatever stack it needs. The library is compared with it on random tables and lines.
#ifndef CORVANE_TESTS_COMMAND_COMMANDMODEL_H
#define CORVANE_TESTS_COMMAND_COMMANDMODEL_H

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Corvane::CmdTableHelper::Testing {

/// Thrown where a usage comes back to a node in the same loop, or in the same helper with the same stop: the rules
/// alone would go on for ever there.
struct ComesBack
{
    std::string text; ///< what is written if printing ends there and the open brackets are closed
};

/// Thrown where a usage has more words than the model writes.
struct TooLong
{
    std::string text; ///< what is written up to there
};

/// What a synopsis of the library emits, such as "209 Registered VELK syntax: ...". It ends at a NUL.
using Emissions = std::vector<std::string>;

class CommandModel
{
public:
    /// Writes usages of up to `maxWords` words.
    explicit CommandModel(std::size_t maxWords = 65536);
    ~CommandModel();
    CommandModel(const CommandModel&) = delete;
    CommandModel& operator=(const CommandModel&) = delete;

    /// Registers a command; `firstHandler` is the number of the first synopsis's handler, the others count on.
    void addCommand(const std::string& commandName, const std::vector<std::string>& synopses, int firstHandler);

    struct Answer
    {
        std::optional<int> handler;
        std::string text;
    };
    /// Throws ComesBack or TooLong.
    Answer dispatch(const std::vector<std::string>& words);

    /// Appends the words of a line that are matched to `usedWords`.
    ///
    /// Returns  the handler of the node that is reached.
    std::optional<int> walkFromRoot(std::string& usedWords, const std::vector<std::string>& words);

    Emissions emissions;

private:
    struct Node;
    using NodePtr = std::shared_ptr<Node>;
    using Nodes = std::vector<NodePtr>;

    static NodePtr exactSubnode(const NodePtr& node, const std::string& name);
    static bool getToken(const char*& cursor, std::string& token);
    static char process(const char*& cursor, Nodes& frontier);
    static void join(const std::string& word, Nodes& frontier);
    static void keepFirstOccurrences(Nodes& nodes);
    void checkBrackets(const std::string& synopsis, char open, char close);
    static Nodes matching(const NodePtr& node, const std::string& word);
    Nodes matchingRoot(const std::string& word) const;
    NodePtr walk(NodePtr node, std::string* usedWords, const std::vector<std::string>& words);
    NodePtr walkOnce(const NodePtr& node, const std::vector<std::string>& words);

    void follow(const NodePtr& node, const NodePtr& way);
    void printSyntax(NodePtr node);
    void printPelmSyntax(NodePtr node);
    NodePtr printSimpleSubNodes(NodePtr node);
    NodePtr printSubNodes(const NodePtr& from, const NodePtr& stop);
    NodePtr group(const std::string& open, const NodePtr& from, const NodePtr& stop, const std::string& close);
    void writeName(const NodePtr& node);
    void writeAlternatives(const NodePtr& node);

    NodePtr m_root;
    std::set<std::string> m_pending;
    std::map<std::string, NodePtr> m_commandNodes;
    std::string m_out;
    std::set<std::pair<NodePtr, NodePtr>> m_followed; // nodes, each with how it was followed
    const NodePtr m_simple; // stands for printSimpleSubNodes, as a stop does for printSubNodes
    std::size_t m_openBrackets = 0;
    const std::size_t m_maxWords;
    std::size_t m_words = 0;                                     // written
    std::map<std::pair<NodePtr, std::size_t>, NodePtr> m_walked; // by node and number of words that are left
};

} // namespace Corvane::CmdTableHelper::Testing

#endif
