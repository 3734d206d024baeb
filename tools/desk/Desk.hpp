#pragma once

#include <kivo/platform/ReadID.hpp>
#include <kivo/reader/Card.hpp>
#include <kivo/simulator/CardService.hpp>
#include <kivo/simulator/Passport.hpp>
#include <kivo/simulator/VirtualReader.hpp>

#include <filesystem>
#include <memory>
#include <string>

namespace desk {

/// A simulated passport on a card reader, and the document reader that reads it. Main thread.
class Desk {
public:
    /// How the passport's chip is reached.
    enum class Way {
        /// A card service of this process's own, or the socket where the service cannot run. Sets an environment
        /// variable, so make the desk before threads run.
        cardService,
        /// A socket that stands in for the card reader.
        socket,
    };

    /// `folder` takes the certificates of the state that issued the passport.
    Desk(Way way, const std::filesystem::path& folder);

    /// The passport that lies on the reader.
    const std::shared_ptr<kivo::simulator::Passport>& passport() const { return passport_; }

    /// A document reader that trusts the passport's state. Without `usesCamera` the person types.
    std::shared_ptr<kivo::platform::ReadID> makeReader(bool usesCamera) const;

    /// How the chip is reached, as the rest of a sentence: "through ...".
    const std::string& way() const { return way_; }

private:
    void layOnSocket();

    std::filesystem::path certificates_;
    std::shared_ptr<kivo::simulator::Passport> passport_;
    std::unique_ptr<kivo::simulator::CardService> service_;
    std::unique_ptr<kivo::simulator::VirtualReader> virtualReader_;
    std::unique_ptr<kivo::simulator::CardSocket> socket_;
    std::shared_ptr<kivo::reader::CardSource> cards_;
    std::string way_;
};

} // namespace desk
