#include "operations/name_lists.h"

#include <array>

namespace tallyrink::names {

namespace {

using namespace std::string_view_literals;

// clang-format off
constexpr std::array kFirstNames = {
    "Aaron"sv, "Adam"sv, "Aidan"sv, "Alex"sv, "Andre"sv, "Anders"sv, "Anton"sv, "Axel"sv, "Ben"sv, "Blake"sv,
    "Brad"sv, "Brandon"sv, "Brent"sv, "Brett"sv, "Bryce"sv, "Caleb"sv, "Cam"sv, "Carl"sv, "Casey"sv, "Chad"sv,
    "Charlie"sv, "Chris"sv, "Clark"sv, "Cody"sv, "Colin"sv, "Connor"sv, "Craig"sv, "Curtis"sv, "Dale"sv, "Dan"sv,
    "Darcy"sv, "Darren"sv, "Dave"sv, "Dean"sv, "Denis"sv, "Derek"sv, "Dmitri"sv, "Doug"sv, "Drew"sv, "Dylan"sv,
    "Elias"sv, "Emil"sv, "Eric"sv, "Evan"sv, "Felix"sv, "Finn"sv, "Frank"sv, "Gabe"sv, "Garrett"sv, "Gavin"sv,
    "Glen"sv, "Grant"sv, "Greg"sv, "Gus"sv, "Hank"sv, "Henrik"sv, "Hugo"sv, "Ian"sv, "Isaac"sv, "Ivan"sv,
    "Jack"sv, "Jake"sv, "Jamie"sv, "Jan"sv, "Jared"sv, "Jason"sv, "Jeff"sv, "Jesse"sv, "Joel"sv, "Jonas"sv,
    "Jordan"sv, "Josh"sv, "Julien"sv, "Karl"sv, "Keith"sv, "Ken"sv, "Kevin"sv, "Kyle"sv, "Lars"sv, "Leo"sv,
    "Liam"sv, "Logan"sv, "Lucas"sv, "Luke"sv, "Marc"sv, "Marcus"sv, "Mark"sv, "Martin"sv, "Matt"sv, "Max"sv,
    "Mikael"sv, "Mike"sv, "Miro"sv, "Nate"sv, "Neil"sv, "Nick"sv, "Niklas"sv, "Noah"sv, "Olli"sv, "Oscar"sv,
    "Owen"sv, "Paul"sv, "Pavel"sv, "Pete"sv, "Phil"sv, "Quinn"sv, "Ray"sv, "Reid"sv, "Rick"sv, "Riley"sv,
    "Rob"sv, "Roman"sv, "Ross"sv, "Ryan"sv, "Sam"sv, "Scott"sv, "Sean"sv, "Seth"sv, "Shane"sv, "Simon"sv,
    "Stefan"sv, "Steve"sv, "Ted"sv, "Theo"sv, "Tim"sv, "Todd"sv, "Tomas"sv, "Trent"sv, "Trevor"sv, "Troy"sv,
    "Tyler"sv, "Victor"sv, "Vince"sv, "Wade"sv, "Walt"sv, "Wes"sv, "Will"sv, "Zach"sv,
};

constexpr std::array kOldTimeFirstNames = {
    "Alf"sv, "Bert"sv, "Clarence"sv, "Cyril"sv, "Earl"sv, "Elmer"sv, "Ernie"sv, "Harold"sv, "Herb"sv, "Lorne"sv,
    "Milt"sv, "Murray"sv, "Nels"sv, "Ralph"sv, "Reg"sv, "Roy"sv, "Syl"sv, "Wilf"sv, "Archie"sv, "Percy"sv,
};

constexpr std::array kSurnames = {
    "Aasvold"sv, "Ahlqvaren"sv, "Alderwick"sv, "Ambersley"sv, "Andervolt"sv, "Arkwell"sv, "Arnsdahl"sv,
    "Ashbecker"sv, "Aubertine"sv, "Avenell"sv, "Balsgaard"sv, "Bardolph"sv, "Barkhaven"sv, "Beaumarec"sv,
    "Bellcroft"sv, "Benevik"sv, "Berglow"sv, "Birchmont"sv, "Blakemoor"sv, "Blomqvard"sv, "Boivelle"sv,
    "Bonnacorse"sv, "Brackendale"sv, "Brannigar"sv, "Brevald"sv, "Brightmoor"sv, "Brodeaux"sv, "Bruckhardt"sv,
    "Burlingsby"sv, "Caddesby"sv, "Calloran"sv, "Carrabine"sv, "Castermere"sv, "Chadmoor"sv, "Charbonvik"sv,
    "Cheverell"sv, "Clairmonde"sv, "Coldarrow"sv, "Corvanek"sv, "Cottersby"sv, "Cranmoor"sv, "Crestwell"sv,
    "Dahlmark"sv, "Dalgarrow"sv, "Danvorth"sv, "Darrowby"sv, "Delacourtier"sv, "Demarcey"sv, "Desrochelle"sv,
    "Drummerhill"sv, "Dufresnay"sv, "Dunmarrow"sv, "Eckersvold"sv, "Edgemire"sv, "Ellingvard"sv, "Elmsworth"sv,
    "Engstrolm"sv, "Falkenmoor"sv, "Farquist"sv, "Faulkenbury"sv, "Fenwright"sv, "Fernbeck"sv, "Fjellstad"sv,
    "Folkvard"sv, "Fonterre"sv, "Fossvik"sv, "Frostenby"sv, "Galbreth"sv, "Garrowick"sv, "Gaspardin"sv,
    "Gelinard"sv, "Gildermoor"sv, "Glenwarrick"sv, "Gravenor"sv, "Greyhallow"sv, "Gullmarsh"sv, "Gunderwick"sv,
    "Haakenrud"sv, "Hallowmere"sv, "Halvorstad"sv, "Hammerlund"sv, "Hartmoor"sv, "Haverlund"sv,
    "Heathmarrow"sv, "Hedvallen"sv, "Hellgard"sv, "Hennervault"sv, "Hillbrecht"sv, "Holmsgaard"sv,
    "Hornmere"sv, "Huxtaby"sv, "Ingleborne"sv, "Iverholt"sv, "Jaskolar"sv, "Jeraux"sv, "Kallenborn"sv,
    "Karvonek"sv, "Keldermann"sv, "Kestrelson"sv, "Kettridge"sv, "Kilbrannan"sv, "Kirkendorf"sv, "Kjellmark"sv,
    "Klaverbeck"sv, "Kolvanen"sv, "Korhanek"sv, "Kristoval"sv, "Lachevier"sv, "Lafrenaye"sv, "Lamontier"sv,
    "Langvik"sv, "Larchmere"sv, "Laurendelle"sv, "Lavergnac"sv, "Leclairet"sv, "Lindqvard"sv, "Lockmarrow"sv,
    "Lonsvard"sv, "Lorimore"sv, "Lundgaarden"sv, "Maclerran"sv, "Malvaney"sv, "Marchevski"sv, "Marrowby"sv,
    "Maskelund"sv, "Mayfarrow"sv, "McAllistair"sv, "McBrannock"sv, "McCaldron"sv, "McFarrow"sv, "McGillray"sv,
    "McKendrow"sv, "McTavert"sv, "Mellersby"sv, "Merriwold"sv, "Millbranke"sv, "Montclaire"sv, "Morrowgate"sv,
    "Mortensby"sv, "Mossgrove"sv, "Navratek"sv, "Nettlewick"sv, "Norquayle"sv, "Nyborgen"sv, "Oakenbury"sv,
    "Odegarden"sv, "Olafsrud"sv, "Orlevik"sv, "Ostervik"sv, "Ottermere"sv, "Paquetteau"sv, "Pellerinot"sv,
    "Pemberwick"sv, "Penmarrow"sv, "Perreaultin"sv, "Petraskov"sv, "Pilkerton"sv, "Prestwold"sv,
    "Quillfeather"sv, "Quinterro"sv, "Radmoor"sv, "Ravensholt"sv, "Redgrove"sv, "Renvall"sv, "Ridgemont"sv,
    "Rimmersby"sv, "Rockwellan"sv, "Rosendahlen"sv, "Rothmere"sv, "Rudbeckson"sv, "Saltmoor"sv, "Sandervolt"sv,
    "Savarine"sv, "Scarsvold"sv, "Selkirkby"sv, "Severholm"sv, "Silverhorn"sv, "Skarsvik"sv, "Sommervale"sv,
    "Stavrakov"sv, "Stenmarrow"sv, "Stillmere"sv, "Stonewick"sv, "Strandqvist"sv, "Sundmark"sv, "Talbeck"sv,
    "Tarnowick"sv, "Tesseraux"sv, "Thackerby"sv, "Thornvald"sv, "Tillingmoor"sv, "Torvanek"sv, "Tremblane"sv,
    "Trevarrow"sv, "Uddervik"sv, "Ulverstad"sv, "Vallencorte"sv, "Vanderhallow"sv, "Varnholt"sv, "Vasquell"sv,
    "Velkander"sv, "Vernholm"sv, "Vickersby"sv, "Voskuijlen"sv, "Wainsmoor"sv, "Waldgrave"sv, "Warrenby"sv,
    "Wedgemoor"sv, "Wellhaven"sv, "Westermarrow"sv, "Whitmarrow"sv, "Wickerstad"sv, "Windmarsh"sv,
    "Wintervold"sv, "Wolstenmoor"sv, "Wrenfield"sv, "Yarrowby"sv, "Ystvedt"sv, "Zalnorek"sv, "Zelinsko"sv,
    "Zukovar"sv,
};

constexpr std::array kCityStems = {
    "Alder"sv, "Amber"sv, "Bramble"sv, "Cairn"sv, "Corran"sv, "Copper"sv, "Drumlin"sv, "Ember"sv, "Falcon"sv,
    "Fallow"sv, "Flint"sv, "Frost"sv, "Gannet"sv, "Granite"sv, "Heron"sv, "Juniper"sv, "Kestrel"sv, "Lark"sv,
    "Linden"sv, "Marten"sv, "Osprey"sv, "Quarry"sv, "Raven"sv, "Rook"sv, "Rowan"sv, "Sable"sv, "Sedge"sv,
    "Sparrow"sv, "Tamarack"sv, "Thistle"sv, "Wren"sv, "Yarrow"sv,
};

constexpr std::array kCityEndings = {
    "brook"sv, "crest"sv, "dale"sv, "gate"sv, "haven"sv, "holm"sv, "mere"sv, "mouth"sv, "port"sv, "ridge"sv,
    "stead"sv, "wick"sv, " Falls"sv, " Harbour"sv, " Bay"sv, " Point"sv, " Springs"sv, " Landing"sv,
    " Crossing"sv, " Hollow"sv, " Narrows"sv, " Rapids"sv,
};

constexpr std::array kNicknames = {
    "Kestrels"sv, "Lynx"sv, "Stags"sv, "Otters"sv, "Marauders"sv, "Voyageurs"sv, "Blizzard"sv, "Comets"sv,
    "Foxes"sv, "Herons"sv, "Ironmen"sv, "Wolverines"sv, "Grizzlies"sv, "Mariners"sv, "Timberwolves"sv,
    "Huskies"sv, "Ravens"sv, "Bison"sv, "Monarchs"sv, "Thunder"sv, "Cyclones"sv, "Miners"sv, "Lumberjacks"sv,
    "Pioneers"sv, "Rockets"sv, "Falcons"sv, "Cougars"sv, "Badgers"sv, "Moose"sv, "Chargers"sv, "Nighthawks"sv,
    "Wolves"sv, "Owls"sv, "Knights"sv, "Raiders"sv, "Storm"sv, "Glaciers"sv, "Tundra"sv, "Mustangs"sv,
    "Stallions"sv, "Barons"sv, "Dragoons"sv, "Hornets"sv, "Bobcats"sv, "Ospreys"sv, "Loons"sv, "Sturgeons"sv,
    "Pike"sv, "Muskies"sv, "Elk"sv, "Caribou"sv, "Northmen"sv, "Rivermen"sv, "Harpoons"sv, "Anchors"sv,
    "Sentinels"sv, "Guardians"sv, "Express"sv, "Locomotives"sv, "Steamers"sv, "Foundrymen"sv,
    "Smelters"sv, "Millers"sv, "Trappers"sv, "Prospectors"sv, "Frontiersmen"sv, "Highlanders"sv, "Lancers"sv,
    "Hussars"sv, "Vikings"sv, "Titans"sv, "Giants"sv, "Wildcats"sv, "Jackals"sv,
    "Condors"sv, "Eagles"sv, "Hawks"sv, "Buzzards"sv, "Griffins"sv, "Phantoms"sv, "Spectres"sv, "Aces"sv,
    "Jesters"sv, "Royals"sv, "Regals"sv, "Dukes"sv, "Earls"sv, "Squires"sv, "Admirals"sv, "Commodores"sv,
    "Corsairs"sv, "Privateers"sv, "Buccaneers"sv, "Clippers"sv, "Schooners"sv, "Icebreakers"sv,
    "Tempest"sv, "Gales"sv, "Twisters"sv, "Flurries"sv,
};

constexpr std::array kNicknameQualifiers = {
    "Iron"sv, "Silver"sv, "Red"sv, "Black"sv, "Gold"sv, "Grey"sv, "White"sv, "Blue"sv, "Northern"sv, "River"sv,
    "Copper"sv, "Thunder"sv,
};

constexpr std::array kArenaWords = {
    "Harbourfront"sv, "Riverside"sv, "Lakeshore"sv, "Centennial"sv, "Memorial"sv, "Civic"sv, "Union"sv,
    "Northgate"sv, "Foundry"sv, "Granary"sv, "Ironworks"sv, "Pioneer"sv, "Summit"sv, "Meridian"sv, "Beacon"sv,
    "Crown"sv, "Heritage"sv, "Millstone"sv, "Copperline"sv, "Tidewater"sv, "Junction"sv, "Stockyard"sv,
    "Lighthouse"sv, "Waterworks"sv,
};

constexpr std::array kArenaKinds = {
    "Arena"sv, "Centre"sv, "Coliseum"sv, "Gardens"sv, "Forum"sv, "Dome"sv, "Pavilion"sv, "Ice Palace"sv,
    "Rink"sv, "Fieldhouse"sv, "Auditorium"sv, "Ice House"sv,
};

constexpr std::array kDivisionNames = {
    "Aurora"sv, "Boreal"sv, "Cascade"sv, "Delta"sv, "Ember"sv, "Fjord"sv, "Granite"sv, "Harbour"sv,
    "Iron Range"sv, "Juniper"sv, "Keystone"sv, "Lakeshore"sv, "Meridian"sv, "Northwood"sv, "Outpost"sv,
    "Prairie"sv, "Quarry"sv, "Ridgeline"sv, "Summit"sv, "Timber"sv, "Upland"sv, "Voyageur"sv, "Windward"sv,
    "Whitewater"sv,
};

constexpr std::array kConferenceNames = {"Northern"sv, "Southern"sv};
// clang-format on

}  // namespace

std::span<const std::string_view> firstNames() { return kFirstNames; }
std::span<const std::string_view> oldTimeFirstNames() { return kOldTimeFirstNames; }
std::span<const std::string_view> surnames() { return kSurnames; }
std::span<const std::string_view> cityStems() { return kCityStems; }
std::span<const std::string_view> cityEndings() { return kCityEndings; }
std::span<const std::string_view> nicknames() { return kNicknames; }
std::span<const std::string_view> nicknameQualifiers() { return kNicknameQualifiers; }
std::span<const std::string_view> arenaWords() { return kArenaWords; }
std::span<const std::string_view> arenaKinds() { return kArenaKinds; }
std::span<const std::string_view> divisionNames() { return kDivisionNames; }
std::span<const std::string_view> conferenceNames() { return kConferenceNames; }

}  // namespace tallyrink::names
