// Every field of the structures has its place: answers in which no two values are the same.

#include <gtest/gtest.h>

#include <cstring>
#include <functional>

#include "tests/printer/printer_lab.h"

namespace {

// The fields of a structure as text, those that are not known as "-". `layout`: u a number of 32
// bits, l one of 64, i a nuv_int, t a nuv_text, d a factor.
template <class T>
std::string Fields(const T& value, const std::string& layout) {
  const char* at = reinterpret_cast<const char*>(&value) + sizeof value.size;
  const auto take = [&at](auto& into) {
    std::memcpy(&into, at, sizeof into);
    at += sizeof into;
  };
  std::string text;
  for (const char kind : layout) {
    if (!text.empty()) text += ' ';
    uint32_t number = 0;
    int64_t longNumber = 0;
    nuv_int known = {};
    nuv_text words = {};
    double factor = 0;
    switch (kind) {
      case 'u':
        take(number);
        text += std::to_string(number);
        break;
      case 'l':
        take(longNumber);
        text += longNumber == 0 ? "0" : "later";
        break;
      case 'i':
        take(known);
        text += known.known == 1 ? std::to_string(known.value) : known.value == 0 ? "-" : "?";
        break;
      case 't':
        take(words);
        text += words.flags == NUV_TEXT_KNOWN ? words.text : "-";
        break;
      default:
        take(factor);
        text += std::to_string(factor).substr(0, 4);
    }
  }
  EXPECT_EQ(at, reinterpret_cast<const char*>(&value + 1)) << layout;
  return text;
}

class FieldsTest : public PrinterLab {
 protected:
  // What a query makes of these answers, the first word of each the code.
  template <class T, class Query, class... Inputs>
  std::string Ask(const std::vector<std::string>& answers, const std::string& layout, Query query,
                  Inputs... inputs) {
    Answers(answers);
    T value = NUV_INIT(T);
    std::memset(reinterpret_cast<char*>(&value) + sizeof value.size, 0x55,
                sizeof value - sizeof value.size);
    const nuv_result result = query(&value, printer.Handle(), inputs..., nullptr, nullptr);
    return result == NUV_RESULT_OK ? Fields(value, layout) : nuv_result_text(result);
  }
  // The same of a number, below 0 why there is none.
  template <class Query>
  int Number(const std::vector<std::string>& answers, Query query) {
    Answers(answers);
    int32_t number = 0;
    const nuv_result result = query(&number, printer.Handle(), nullptr, nullptr);
    return result == NUV_RESULT_OK ? number : -result;
  }
  void Answers(const std::vector<std::string>& answers) {
    simulator->ClearFaults(0);
    for (const std::string& answer : answers) {
      const std::string code = answer.substr(1, answer.find(' ') - 1);
      NuvSim::Fault fault = NuvSim::ParseFault("answer,code=" + code + ",text=x");
      fault.text = answer;
      simulator->InjectFault(0, fault);
    }
  }
  nuv::Printer printer;
};

TEST_F(FieldsTest, OfEveryAnswer) {
  Start({Config("SIM1", "127.0.0.1", "no model that is known")});
  printer = nuv::Printer::OpenAddress("127.0.0.1");
  const std::string port = std::to_string(simulator->TcpPort());
  const std::string mac = " 0 02:00:00:00:00:01 ";
  const std::string refused = nuv_result_text(NUV_RESULT_REFUSED);

  const std::string identity = "utuutttttttt";
  EXPECT_EQ(Ask<nuv_identity>({"F101 OK V:1 N:2 M:3 S:4 C:5", "F197 OK N:6"}, identity,
                              nuv_printer_get_identity),
            "1 127.0.0.1 " + port + mac + "2 3 4 6 1 5 -");
  EXPECT_EQ(Ask<nuv_identity>({"F101 OK V:1 N:2 M:BEGO VARSEO XS S:4 C:5", "F354 OK D:7",
                               "F140 OK S8", "F197 OK N:"},
                              identity, nuv_printer_get_identity),
            "1 127.0.0.1 " + port + mac + "2 BEGO VARSEO XS 8  1 5 7");
  EXPECT_EQ(Ask<nuv_identity>({"F101 NG"}, identity, nuv_printer_get_identity), refused);
  EXPECT_EQ(Ask<nuv_identity>({std::string("F101 OK V:1 N:a\0b M:3", 21), "F197 NG"}, identity,
                              nuv_printer_get_identity),
            "1 127.0.0.1 " + port + mac + "- 3 - - 1 - -")
      << "repaired";

  const auto state = [&](const char* answer) {
    return Ask<nuv_state>({answer}, "uiiiiitl", nuv_printer_get_state);
  };
  EXPECT_EQ(state("F102 OK S:1 L:2 T:3 C:4% R:5"), "0 1 - 2 4 3 5 later");
  EXPECT_EQ(state("F102 OK S:1 L:2 T:0 C:4% R:5"), "0 1 - 2 4 - 5 0");
  EXPECT_EQ(state("F102 OK S:3 E:7 L:2 T:3 C:4%"), "0 3 7 - - - - 0");
  EXPECT_EQ(state("F102 OK S:0 E:7 L:2 T:3 C:4%"), "0 0 - - - - - 0");

  const auto job = [&](const std::vector<std::string>& answers) {
    return Ask<nuv_job>(answers, "iiiit", nuv_printer_get_job);
  };
  EXPECT_EQ(job({"F107 OK L:1 T:2 R:3", "F157 OK I4 S5"}), "4 5 1 2 3");
  EXPECT_EQ(job({"F107 NG", "F157 OK I4 S5"}), "4 5 - - -");
  EXPECT_EQ(job({"F107 OK L:1 T:2 R:3", "F157 NG"}), "- - 1 2 3");
  EXPECT_EQ(job({"F107 NG", "F157 NG"}), refused);

  const auto resin = [&](const std::vector<std::string>& answers) {
    return Ask<nuv_resin>(answers, "iiiiittttt", nuv_printer_get_resin);
  };
  EXPECT_EQ(resin({"F105 OK S:1 R:2 C:3 V:4 Q:5", "F335 OK S:1", "F219 OK"}),
            "0 2 4 1 1 3 - - 5 -");
  EXPECT_EQ(resin({"F105 NG S:3", "F335 OK S:0", "F219 NG"}), "4 - - 0 0 - - - - -");
  EXPECT_EQ(resin({"F105 NG", "F120 OK S1 R2 D3 T4", "F335 NG"}), "0 2 - - - - 4 - - 3");
  EXPECT_EQ(resin({"F105 NG", "F120 NG S0", "F335 NG"}), "1 - - - - - - - - -");
  EXPECT_EQ(resin({"F105 NG", "F120 NG", "F356 OK N:1 L:2 D:3 V:4", "F335 NG"}),
            "- 4 - - - - - 1 2 3");
  EXPECT_EQ(resin({"F105 NG", "F120 NG", "F356 NG"}), refused);

  EXPECT_EQ(Ask<nuv_scaling>({"F369 OK X:1.5,2.5 Y:3.5,4.5 Z:5.5,6.5"}, "udddddd",
                             nuv_printer_get_scaling),
            "0 1.50 2.50 3.50 4.50 5.50 6.50");
  EXPECT_EQ(Ask<nuv_scaling>({"F369 OK X:1.5 Z:5.5,"}, "udddddd", nuv_printer_get_scaling),
            nuv_result_text(NUV_RESULT_UNREADABLE));
  EXPECT_EQ(Ask<nuv_scaling>({"F369 OK X:1.5 Y:2.5,3.5"}, "udddddd", nuv_printer_get_scaling),
            "0 1.50 0.00 2.50 3.50 0.00 0.00");
  for (const char* answer : {"F159 OK S0", "F159 OK S1 V5", "F159 OK"}) {
    EXPECT_EQ(Number({answer}, nuv_printer_get_laser_power_percent), -NUV_RESULT_UNREADABLE);
  }
  EXPECT_EQ(Number({"F159 OK S0 V5"}, nuv_printer_get_laser_power_percent), 5);

  const char* const here = nullptr;
  EXPECT_EQ(Ask<nuv_access_point>({"F190 OK S:1 C:2 M:3 R:4 SSID=<5>"}, "iiiit",
                                  nuv_printer_get_access_point, here),
            "1 4 3 2 5");
  const auto network = [&](int which) {
    return Ask<nuv_network>({"F192 OK IP=1 SUB=2 GATE=3 DNS1=4 DNS2=0.0.0.0 MAC=6"}, "utttttt",
                            nuv_printer_get_network, which);
  };
  for (const auto& [which, request] : {std::pair(0, "F192"), {1, "F192 S0"}, {2, "F192 S1"}}) {
    EXPECT_EQ(network(which), "0 1 2 3 4 - 6");
    EXPECT_EQ(simulator->Requests().back(), request);
  }
  for (const int none : {-1, 3}) {
    EXPECT_EQ(network(none), nuv_result_text(NUV_RESULT_INVALID_ARGUMENT));
  }

  const auto versions = [&](const std::vector<std::string>& answers) {
    return Ask<nuv_versions>(answers, "uttt", nuv_printer_get_versions);
  };
  EXPECT_EQ(versions({"F310 OK V:1 L:2", "F504 OK V:3"}), "0 1 2 3");
  EXPECT_EQ(versions({"F310 NG", "F504 OK V:3"}), "0 - - 3");
  EXPECT_EQ(versions({"F310 OK V:1 L:2", "F504 NG"}), "0 1 2 -");
  EXPECT_EQ(versions({"F310 NG", "F504 NG"}), refused);
  const auto sensors = [&](const std::vector<std::string>& answers) {
    return Ask<nuv_sensors>(answers, "iiiiiiiiiiiiii", nuv_printer_get_sensors);
  };
  EXPECT_EQ(sensors({"F301 OK C_T:1 C_B:2 ZLT:3 ZLB:4 V_S:5 L_S:6 W_H:7 Y_H:8 C_LI:9 C_P:10 P_S:11 "
                     "Y_F:12 T_T:13",
                     "F515 OK R:14"}),
            "1 2 13 6 5 3 4 7 8 12 9 10 11 14");
  EXPECT_EQ(sensors({"F301 NG", "F515 OK R:1"}), "- - - - - - - - - - - - - 1");
  EXPECT_EQ(sensors({"F301 NG", "F515 NG"}), refused);
  EXPECT_EQ(Ask<nuv_laser>({"F186 OK L1 H2 A3", "F303 OK LSU:1 P1:4 P2:5 P3:6 P4:7 P5:8"},
                           "iiiiiiii", nuv_printer_get_laser, 1),
            "1 2 3 4 5 6 7 8");
  const auto unit = [&](const char* answer) {
    return Ask<nuv_scan_unit>({answer}, "iiiiiiiiiiiiiii", nuv_printer_get_scan_unit);
  };
  EXPECT_EQ(unit("F327 OK C:1 L:2 P:3 S:4 T:5 W:6 Y:7"), "1 - - 2 - - 5 - - - - 3 4 6 7");
  EXPECT_EQ(unit("F327 OK C1:1 C2:2 C3:3 L1:4 L2:5 L3:6 T1:7 T2:8 T3:9 Z1:10 Z2:11"),
            "1 2 3 4 5 6 7 8 9 10 11 - - - -");

  EXPECT_EQ(Ask<nuv_job_record>({"F174 OK N1 C2 T3", "F175 OK L4 T5 V6 R7", "F176 OK T8 E9 B10 P11",
                                 "F177 OK T12 Q13"},
                                "iiiiiiiiittttt", nuv_printer_get_job_record, 14),
            "14 7 4 5 6 8 9 10 11 1 2 13 3 12");
  EXPECT_EQ(Ask<nuv_job_counts>({"F169 OK S1 F2 C3 E4"}, "iiii", nuv_printer_get_job_counts, 1),
            "1 2 3 4");
  EXPECT_EQ(simulator->Requests().back(), "F169 S1");
}

// Outputs that there is no place for, and those that are emptied when a call fails.
TEST_F(FieldsTest, OutputsWithoutAPlaceAreTold) {
  Start({Config("SIM1", "127.0.0.1")});
  printer = nuv::Printer::OpenAddress("127.0.0.1");
  nuv_printer* const handle = printer.Handle();
  EXPECT_EQ(nuv_printer_open_address(nullptr, "127.0.0.1", nullptr, nullptr),
            NUV_RESULT_INVALID_ARGUMENT);
  EXPECT_EQ(nuv_printer_get_led_hours(nullptr, handle, nullptr, nullptr),
            NUV_RESULT_INVALID_ARGUMENT);
  EXPECT_EQ(nuv_printer_get_access_points(nullptr, handle, nullptr, nullptr),
            NUV_RESULT_INVALID_ARGUMENT);
  int32_t hours = 5;
  Commits("refuse,code=708");
  EXPECT_EQ(nuv_printer_get_led_hours(&hours, handle, nullptr, nullptr), NUV_RESULT_REFUSED);
  EXPECT_EQ(hours, 0);
  nuv_list* list = reinterpret_cast<nuv_list*>(&hours);
  Commits("refuse,code=198");
  EXPECT_EQ(nuv_printer_get_access_points(&list, handle, nullptr, nullptr), NUV_RESULT_REFUSED);
  EXPECT_EQ(list, nullptr);

  char reply[8] = "before";
  size_t length = 5;
  EXPECT_EQ(nuv_printer_raw(reply, 0, &length, handle, "F102", nullptr, nullptr),
            NUV_RESULT_INVALID_ARGUMENT);
  EXPECT_EQ(nuv_printer_raw(nullptr, 8, &length, handle, "F102", nullptr, nullptr),
            NUV_RESULT_INVALID_ARGUMENT);
  EXPECT_EQ(nuv_printer_raw(reply, 8, nullptr, handle, "F102", nullptr, nullptr),
            NUV_RESULT_INVALID_ARGUMENT);
  EXPECT_EQ(nuv_printer_raw(reply, sizeof reply, &length, handle, "a\nb", nullptr, nullptr),
            NUV_RESULT_INVALID_ARGUMENT);
  EXPECT_STREQ(reply, "") << "nothing of the one before";
  std::memset(reply, 'x', sizeof reply);
  Commits("answer,code=102,text=F1");
  EXPECT_EQ(nuv_printer_raw(reply, sizeof reply, &length, handle, "F102", nullptr, nullptr),
            NUV_RESULT_OK);
  EXPECT_STREQ(reply, "F1");
  EXPECT_EQ(nuv_printer_send(nullptr, handle, "x", nullptr, nullptr, nullptr),
            NUV_RESULT_INVALID_ARGUMENT);
  nuv_outcome outcome = NUV_INIT(nuv_outcome);
  outcome.bytes_sent = 5;
  nuv_send_options options = NUV_INIT(nuv_send_options);
  options.size -= 1;
  EXPECT_EQ(nuv_printer_send(&outcome, handle, "x", &options, nullptr, nullptr),
            NUV_RESULT_INVALID_ARGUMENT);
  EXPECT_EQ(outcome.bytes_sent, 0);
  nuv_error error = NUV_INIT(nuv_error);
  EXPECT_EQ(nuv_printer_get_job_counts(nullptr, nullptr, 0, nullptr, &error),
            NUV_RESULT_INVALID_ARGUMENT);
  EXPECT_EQ(nuv_printer_skip_warmup(nullptr, nullptr, &error), NUV_RESULT_BAD_HANDLE);
  EXPECT_STREQ(error.message.text, nuv_result_text(NUV_RESULT_BAD_HANDLE));
  nuv_identity item = NUV_INIT(nuv_identity);
  ASSERT_EQ(nuv_printer_get_access_points(&list, handle, nullptr, nullptr), NUV_RESULT_OK);
  EXPECT_EQ(nuv_list_get_identity(&item, list, 0), NUV_RESULT_INVALID_ARGUMENT)
      << "of another type";
  nuv_access_point point = NUV_INIT(nuv_access_point);
  for (const int beyond : {-1, nuv_list_count(list)}) {
    EXPECT_EQ(nuv_list_get_access_point(&point, list, beyond), NUV_RESULT_INVALID_ARGUMENT);
  }
  EXPECT_EQ(nuv_list_get_access_point(&point, list, nuv_list_count(list) - 1), NUV_RESULT_OK);
  nuv_list_free(list);
}

}  // namespace
