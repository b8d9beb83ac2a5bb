// One class per command of the printer protocol. What a catalogue row can say stands there; a class
// has code only where it behaves in a way of its own.
#ifndef NUV_COMMAND_COMMANDS_H_
#define NUV_COMMAND_COMMANDS_H_

#include "command/command_base.h"

namespace Nuv::Command {

// Identity.
class F101Cmd final : public CatalogueCommand<101> {
 public:
  // State of the printer as text: the last field S, which follows the serial number's while a print
  // runs. Empty without any.
  std::string State() const;
};

class F102Cmd final : public CatalogueCommand<102> {};  // state
class F103Cmd final : public CatalogueCommand<103> {};  // opens a job
class F104Cmd final : public CatalogueCommand<104> {};  // controls the running job
class F105Cmd final : public CatalogueCommand<105> {};  // resin
class F106Cmd final : public CatalogueCommand<106> {};
class F107Cmd final : public CatalogueCommand<107> {};  // layers and time of the whole job
class F108Cmd final : public CatalogueCommand<108> {};
class F109Cmd final : public CatalogueCommand<109> {};
class F110Cmd final : public CatalogueCommand<110> {};
class F111Cmd final : public CatalogueCommand<111> {};
class F112Cmd final : public CatalogueCommand<112> {};  // skips the warm-up
class F117Cmd final : public CatalogueCommand<117> {};  // free receive buffer
class F120Cmd final : public CatalogueCommand<120> {};  // resin of the first models
class F121Cmd final : public CatalogueCommand<121> {};
class F122Cmd final : public CatalogueCommand<122> {};
class F140Cmd final : public CatalogueCommand<140> {};  // serial number of a BEGO printer
class F141Cmd final : public CatalogueCommand<141> {};  // announces engine firmware
class F155Cmd final : public CatalogueCommand<155> {};
class F156Cmd final : public CatalogueCommand<156> {};
class F157Cmd final : public CatalogueCommand<157> {};  // index and size of the current job
class F159Cmd final : public CatalogueCommand<159> {};  // reads a setting

// Self-test. The printer answers "START" at once and sends a second line with "FINISH" when the
// test is over, which this waits for (once, for the time of a reply). Each marker that came is in
// the result map, as its own value.
class F160Cmd final : public CatalogueCommand<160> {
 public:
  TransactionStatus Execute() override;
  ResultMap GetResultMap() const override;
};

class F166Cmd final : public CatalogueCommand<166> {};
class F169Cmd final : public CatalogueCommand<169> {};  // job counters
class F170Cmd final : public CatalogueCommand<170> {};  // last updated index
class F171Cmd final : public CatalogueCommand<171> {};  // sets the last updated index
class F174Cmd final : public CatalogueCommand<174> {};  // job information 1
class F175Cmd final : public CatalogueCommand<175> {};  // job information 2
class F176Cmd final : public CatalogueCommand<176> {};  // job information 3
class F177Cmd final : public CatalogueCommand<177> {};  // job information 4
class F186Cmd final : public CatalogueCommand<186> {};  // photodiode readings
class F188Cmd final : public CatalogueCommand<188> {};  // opens a panel update
class F189Cmd final : public CatalogueCommand<189> {};  // ends a panel update
class F190Cmd final : public CatalogueCommand<190> {};  // wireless link

// Joins or leaves an access point: "1", C, D, name and key, or "2" alone.
class F191Cmd final : public CatalogueCommand<191> {
 public:
  std::string BuildRequest() const override;
};

class F192Cmd final : public CatalogueCommand<192> {};  // network report
class F194Cmd final : public CatalogueCommand<194> {};

// Sets the nickname: it follows after one blank, without a tag, to the end of the line, so that it
// may hold blanks.
class F196Cmd final : public CatalogueCommand<196> {
 public:
  std::string BuildRequest() const override;
};

class F197Cmd final : public CatalogueCommand<197> {};  // nickname
class F198Cmd final : public CatalogueCommand<198> {};  // access points in reach
class F219Cmd final : public CatalogueCommand<219> {};  // tag registration
class F301Cmd final : public CatalogueCommand<301> {};  // sensors
class F303Cmd final : public CatalogueCommand<303> {};  // laser pulse widths
class F310Cmd final : public CatalogueCommand<310> {};  // version of the Android board
class F319Cmd final : public CatalogueCommand<319> {};
class F327Cmd final : public CatalogueCommand<327> {};  // flash parameters of the light engine
class F332Cmd final : public CatalogueCommand<332> {};  // writes a setting
class F335Cmd final : public CatalogueCommand<335> {};  // open mode
class F353Cmd final : public CatalogueCommand<353> {};  // readiness of a BEGO printer for a job
class F354Cmd final : public CatalogueCommand<354> {};  // identity of a BEGO printer

// Material and project of a job: "M", the material ID, "=" and the project ID.
class F355Cmd final : public CatalogueCommand<355> {
 public:
  std::string BuildRequest() const override;
};

class F356Cmd final : public CatalogueCommand<356> {};  // resin of a BEGO printer
class F366Cmd final : public CatalogueCommand<366> {};

// Announces the print file: its name behind "=".
class F367Cmd final : public CatalogueCommand<367> {
 public:
  std::string BuildRequest() const override;
};

class F369Cmd final : public CatalogueCommand<369> {};  // scaling
class F370Cmd final : public CatalogueCommand<370> {};  // sets the scaling
class F500Cmd final : public CatalogueCommand<500> {};  // opens a job on an Android board
class F501Cmd final : public CatalogueCommand<501> {};  // announces a thumbnail
class F503Cmd final : public CatalogueCommand<503> {};  // free receive buffer, Android board
class F504Cmd final : public CatalogueCommand<504> {};  // version of the panel
class F506Cmd final : public CatalogueCommand<506> {};  // announces firmware, Android board
class F507Cmd final : public CatalogueCommand<507> {};  // starts the upgrade, Android board
class F508Cmd final : public CatalogueCommand<508> {};  // announces a print file by digest
class F515Cmd final : public CatalogueCommand<515> {};  // reposition
class F550Cmd final : public CatalogueCommand<550> {};
class F708Cmd final : public CatalogueCommand<708> {};  // hours of the light source
class F807Cmd final : public CatalogueCommand<807> {};
class F839Cmd final : public CatalogueCommand<839> {};

}  // namespace Nuv::Command

#endif  // NUV_COMMAND_COMMANDS_H_
