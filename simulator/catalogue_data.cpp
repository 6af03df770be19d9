#include "simulator/catalogue.h"

namespace lineup::simulator {

// Invented services. Some ids (service_id) are in several tables, 44 to 51 in the IP table at last
// alone; there are cells without a value, empty lists, and names with accents, quotes and the
// wildcards of LIKE. The IP muxes are those of the initial configuration.
const char kCatalogueSql[] = R"sql(
CREATE TABLE availableSatService (
  id INTEGER, input_id INTEGER, orbital_position INTEGER, satellite_name TEXT,
  polarization INTEGER, band TEXT, lnb_voltage INTEGER, frequency INTEGER, symbol_rate INTEGER,
  fec INTEGER, delivery_system INTEGER, stream_id INTEGER, pls_type INTEGER, pls_code INTEGER,
  network_name TEXT, service_id INTEGER, service_name TEXT, dvb_service_id INTEGER,
  catalogue_flag INTEGER, service_type INTEGER, provider_name TEXT, original_network_id INTEGER,
  transport_stream_id INTEGER, text_list TEXT, integer_list TEXT);
INSERT INTO availableSatService VALUES
  (1, 3, 120, 'Stellarin 12E', 1, 'low', 13, 11056, 27500, 3, 0, -1, 0, -1, 'Stellarin Net', 11, 'Velaria Uno', 4101, 0, 1, 'Velaria Media', 8120, 1101, 'spa,eng', '101,102,103'),
  (2, 3, 120, 'Stellarin 12E', 1, 'low', 13, 11056, 27500, 3, 0, -1, 0, -1, 'Stellarin Net', 12, 'Velaria Dos', 4102, 0, 1, 'Velaria Media', 8120, 1101, 'spa', '111,112'),
  (3, 3, 120, 'Stellarin 12E', 1, 'low', 13, 11056, 27500, 3, 0, -1, 0, -1, 'Stellarin Net', 13, 'Velaria Cinéma', 4103, 1, 25, 'Velaria Media', 8120, 1101, 'fra,eng', '121,122,123,124'),
  (4, 3, 120, 'Stellarin 12E', 1, 'low', 13, 11056, 27500, 3, 0, -1, 0, -1, 'Stellarin Net', 14, 'Velaria Sport', 4104, 1, 25, 'Velaria Media', 8120, 1101, 'spa,eng,por', '131,132'),
  (5, 3, 120, 'Stellarin 12E', 1, 'low', 13, 11056, 27500, 3, 0, -1, 0, -1, 'Stellarin Net', 15, 'Velaria Clásicos', 4105, 1, 1, 'Velaria Media', 8120, 1101, 'spa', ''),
  (6, 3, 120, 'Stellarin 12E', 1, 'low', 13, 11056, 27500, 3, 0, -1, 0, -1, 'Stellarin Net', 16, 'Velaria Test Card', 4106, 0, 12, 'Velaria Media', 8120, 1101, '', ''),
  (7, 4, 120, 'Stellarin 12E', 0, 'high', 18, 11778, 29900, 5, 1, -1, 0, -1, 'Stellarin Net', 17, 'Brumel Nachrichten', 5201, 0, 1, 'Brumel Verbund', 8120, 1102, 'deu', '511,512'),
  (8, 4, 120, 'Stellarin 12E', 0, 'high', 18, 11778, 29900, 5, 1, -1, 0, -1, 'Stellarin Net', 18, 'Brumel Kultur', 5202, 0, 25, 'Brumel Verbund', 8120, 1102, 'deu,fra', '521,522,523'),
  (9, 4, 120, 'Stellarin 12E', 0, 'high', 18, 11778, 29900, 5, 1, -1, 0, -1, 'Stellarin Net', 19, 'Brumel Küche', 5203, 0, 1, 'Brumel Verbund', 8120, 1102, 'deu', '531'),
  (10, 4, 120, 'Stellarin 12E', 0, 'high', 18, 11778, 29900, 5, 1, -1, 0, -1, 'Stellarin Net', 20, 'Österfjell TV', 5204, 0, 25, 'Brumel Verbund', 8120, 1102, 'nor,swe', '541,542'),
  (11, 4, 120, 'Stellarin 12E', 0, 'high', 18, 11778, 29900, 5, 1, -1, 0, -1, 'Stellarin Net', 21, 'Österfjell Kinder', 5205, 0, 1, 'Brumel Verbund', 8120, 1102, NULL, NULL),
  (12, 4, 120, 'Stellarin 12E', 0, 'high', 18, 11778, 29900, 5, 1, -1, 0, -1, 'Stellarin Net', 22, 'Radio Brumel Jazz', 5206, 0, 2, 'Brumel Verbund', 8120, 1102, 'deu', '561'),
  (13, 5, 230, 'Stellarin 23E', 1, 'high', 13, 12034, 22000, 4, 1, 4, 1, 262140, 'Stellarin Net', 23, 'Télé Rivière', 6301, 0, 25, 'Ondaria', 8230, 2301, 'fra', '611,612'),
  (14, 5, 230, 'Stellarin 23E', 1, 'high', 13, 12034, 22000, 4, 1, 4, 1, 262140, 'Stellarin Net', 24, 'Télé Rivière 2', 6302, 0, 1, 'Ondaria', 8230, 2301, 'fra,,eng', '621,622'),
  (15, 5, 230, 'Stellarin 23E', 1, 'high', 13, 12034, 22000, 4, 1, 4, 1, 262140, 'Stellarin Net', 25, 'L''Étoile Bleue', 6303, 1, 25, 'Ondaria', 8230, 2301, 'fra', '631,632'),
  (16, 5, 230, 'Stellarin 23E', 1, 'high', 13, 12034, 22000, 4, 1, 4, 1, 262140, 'Stellarin Net', 26, 'Ondaria Música', 6304, 0, 1, 'Ondaria', 8230, 2301, 'spa,cat', '641'),
  (17, 5, 230, 'Stellarin 23E', 1, 'high', 13, 12034, 22000, 4, 1, 4, 1, 262140, 'Stellarin Net', 27, 'Ondaria Niños', 6305, 0, 1, 'Ondaria', 8230, 2301, 'spa', '651, 652'),
  (18, 5, 230, 'Stellarin 23E', 1, 'high', 13, 12034, 22000, 4, 1, 4, 1, 262140, 'Stellarin Net', 28, 'Radio Ondaria', 6306, 0, 2, 'Ondaria', 8230, 2301, 'spa', '661'),
  (19, 6, 230, 'Stellarin 23E', 0, 'low', 18, 10847, 23000, 4, 0, -1, 0, -1, NULL, 29, 'Zarnik 1', 7401, 0, 1, 'Zarnik Grupa', 8230, 2302, 'pol', '711,712'),
  (20, 6, 230, 'Stellarin 23E', 0, 'low', 18, 10847, 23000, 4, 0, -1, 0, -1, NULL, 30, 'Zarnik 2', 7402, 0, 1, 'Zarnik Grupa', 8230, 2302, 'pol', '721,722'),
  (21, 6, 230, 'Stellarin 23E', 0, 'low', 18, 10847, 23000, 4, 0, -1, 0, -1, NULL, 31, 'Zarnik Łąka', 7403, 1, 25, 'Zarnik Grupa', 8230, 2302, 'pol,ukr', '731,732,733'),
  (22, 6, 230, 'Stellarin 23E', 0, 'low', 18, 10847, 23000, 4, 0, -1, 0, -1, NULL, 32, 'Νησί Τηλεόραση', 7404, NULL, 1, 'Zarnik Grupa', 8230, 2302, 'ell', '741'),
  (23, 6, 230, 'Stellarin 23E', 0, 'low', 18, 10847, 23000, 4, 0, -1, 0, -1, NULL, 33, 'Lumen Radyo Çiçek', 7405, 0, 2, 'Zarnik Grupa', 8230, 2302, 'tur', ''),
  (24, 7, -50, 'Boreo 5W', 0, 'high', 18, 12590, 30000, 6, 1, NULL, 0, NULL, 'Boreo Sky', 34, 'Quessel Classics', 8501, 1, 25, 'Quessel Studios', 8905, 551, 'eng', '811,812'),
  (25, 7, -50, 'Boreo 5W', 0, 'high', 18, 12590, 30000, 6, 1, NULL, 0, NULL, 'Boreo Sky', 35, 'Quessel Documentary', 8502, 1, 25, 'Quessel Studios', 8905, 551, 'eng,deu', '821,822,823'),
  (26, 7, -50, 'Boreo 5W', 0, 'high', 18, 12590, 30000, 6, 1, NULL, 0, NULL, 'Boreo Sky', 36, 'Quessel Shop', 8503, 0, 1, 'Quessel Studios', 8905, 551, NULL, '831'),
  (27, 8, -50, 'Boreo 5W', 1, 'low', NULL, 11230, 27500, NULL, 0, -1, NULL, -1, 'Boreo Sky', 37, 'Tesmar World', 9601, 0, 1, 'Tesmar Internacional', 8905, 552, 'eng,spa,fra', '911,912,913'),
  (28, 8, -50, 'Boreo 5W', 1, 'low', NULL, 11230, 27500, NULL, 0, -1, NULL, -1, 'Boreo Sky', 38, 'Tesmar World HD', 9602, 0, 25, 'Tesmar Internacional', 8905, 552, 'eng,spa,fra', '921,922,923');

CREATE TABLE availableTdtService (
  id INTEGER, input_id INTEGER, network_id INTEGER, original_network_id INTEGER,
  transport_stream_id INTEGER, frequency INTEGER, bandwidth INTEGER, delivery_system INTEGER,
  plp_id INTEGER, network_name TEXT, service_id INTEGER, service_name TEXT,
  dvb_service_id INTEGER, catalogue_flag INTEGER, service_type INTEGER, text_list TEXT,
  integer_list TEXT);
INSERT INTO availableTdtService VALUES
  (1, 1, 3201, 8701, 11, 490000, 8, 0, -1, 'Red Tesmar', 1, 'Canal Tesmar 1', 101, 0, 1, 'spa,eng', '101,102'),
  (2, 1, 3201, 8701, 11, 490000, 8, 0, -1, 'Red Tesmar', 2, 'Canal Tesmar 2', 102, 0, 1, 'spa', '111,112'),
  (3, 1, 3201, 8701, 11, 490000, 8, 0, -1, 'Red Tesmar', 3, 'Tesmar Noticias', 103, 0, 1, 'spa', ''),
  (4, 1, 3201, 8701, 11, 490000, 8, 0, -1, 'Red Tesmar', 4, 'Tesmar Niños', 104, 0, 1, 'spa,cat', '131,132,133'),
  (5, 1, 3201, 8701, 11, 490000, 8, 0, -1, 'Red Tesmar', 5, 'Radio Tesmar', 105, 0, 2, 'spa', '141'),
  (6, 1, 3201, 8701, 12, 538000, 8, 0, -1, 'Red Tesmar', 6, 'Diez Lunas', 201, 0, 1, 'spa', '201,202'),
  (7, 1, 3201, 8701, 12, 538000, 8, 0, -1, 'Red Tesmar', 7, 'Diez Lunas HD', 202, 0, 25, 'spa,eng', '211,212'),
  (8, 1, 3201, 8701, 12, 538000, 8, 0, -1, 'Red Tesmar', 8, '100% Folk', 203, 0, 1, NULL, '221'),
  (9, 1, 3201, 8701, 12, 538000, 8, 0, -1, 'Red Tesmar', 9, 'Sierra Ñandú', 204, 0, 1, 'spa', NULL),
  (10, 1, 3201, 8701, 12, 538000, 8, 0, -1, 'Red Tesmar', 10, 'Canal Brañasol', 205, 0, 1, 'spa,ast', '241,242'),
  (11, 2, 3202, 8702, 21, 610000, 8, 1, 1, 'Red Corvano', 11, 'Corvano Televisión', 301, 0, 25, 'spa', '301,302'),
  (12, 2, 3202, 8702, 21, 610000, 8, 1, 1, 'Red Corvano', 12, 'Corvano HD', 302, 0, 25, 'spa,eng', '311,312'),
  (13, 2, 3202, 8702, 21, 610000, 8, 1, 1, 'Red Corvano', 13, 'Corvano Música', 303, 0, 1, '', '321'),
  (14, 2, 3202, 8702, 21, 610000, 8, 1, 1, 'Red Corvano', 14, 'Radio Corvano Clásica', 304, 0, 2, 'spa', '331'),
  (15, 2, 3202, 8702, 21, 610000, 8, 1, 1, 'Red Corvano', 15, 'Corvano Premium', 305, 1, 25, 'spa,eng,fra', '341,342,343'),
  (16, 2, 3202, 8702, 22, 666000, 8, 0, NULL, NULL, 16, 'Costa Lindora TV', 401, NULL, 1, 'spa', '401'),
  (17, 2, 3202, 8702, 22, 666000, 8, 0, NULL, NULL, 17, 'Ría Norte TV', 402, 0, 1, 'glg,spa', '411,412'),
  (18, 2, 3202, 8702, 22, 666000, 8, 0, NULL, NULL, 18, 'Radio Ría Norte', 403, 0, 2, 'glg', '');

CREATE TABLE availableCableService (
  id INTEGER, input_id INTEGER, network_id INTEGER, original_network_id INTEGER,
  transport_stream_id INTEGER, frequency INTEGER, symbol_rate INTEGER, constellation INTEGER,
  annex INTEGER, spectrum_inverted INTEGER, service_id INTEGER, service_name TEXT,
  dvb_service_id INTEGER, catalogue_flag INTEGER, service_type INTEGER, text_list TEXT,
  integer_list TEXT);
INSERT INTO availableCableService VALUES
  (1, 1, 5501, 9901, 71, 306000, 6900, 3, 0, 0, 31, 'Halden Info', 701, 0, 1, 'eng', '1001,1002'),
  (2, 1, 5501, 9901, 71, 306000, 6900, 3, 0, 0, 32, 'Halden Cinema One', 702, 1, 25, 'eng,deu', '1011,1012,1013'),
  (3, 1, 5501, 9901, 71, 306000, 6900, 3, 0, 0, 33, 'Halden Cinema Two', 703, 1, 25, 'eng', '1021,1022'),
  (4, 1, 5501, 9901, 71, 306000, 6900, 3, 0, 0, 34, 'Halden Family', 704, 0, 1, 'eng,nld', ''),
  (5, 1, 5501, 9901, 71, 306000, 6900, 3, 0, 0, 35, 'Radio Halden', 705, 0, 2, NULL, '1041'),
  (6, 1, 5501, 9901, 72, 314000, 6900, 5, 0, 0, 36, 'Mürsen Regional', 721, 0, 1, 'deu', '1101'),
  (7, 1, 5501, 9901, 72, 314000, 6900, 5, 0, 0, 37, 'Mürsen Aktuell', 722, 0, 25, 'deu,eng', '1111,1112'),
  (8, 1, 5501, 9901, 72, 314000, 6900, 5, 0, 0, 38, 'Radio Mürsen', 723, 0, 2, 'deu', '1121'),
  (9, 1, 5501, 9901, 72, 314000, 6900, 5, 0, 0, 39, 'Fablo Kids', 724, 0, 1, 'eng,deu,fra', '1131,1132,1133'),
  (10, 2, 5502, 9901, 73, 402000, 6875, NULL, 0, 1, 40, 'Nordvik Live', 741, NULL, 1, 'nor', '1201,1202'),
  (11, 2, 5502, 9901, 73, 402000, 6875, NULL, 0, 1, 41, 'Nordvik Live HD', 742, 0, 25, 'nor,swe', '1211,1212'),
  (12, 2, 5502, 9901, 73, 402000, 6875, NULL, 0, 1, 42, 'Nordvik Søndag', 743, 0, 1, 'nor', NULL),
  (13, 2, 5502, 9901, 73, 402000, 6875, NULL, 0, 1, 43, 'Café Parlour', 744, 0, 1, 'fra,eng', '1231'),
  (14, 2, 5502, 9901, 73, 402000, 6875, NULL, 0, 1, 44, 'Radio Nordvik', 745, 0, 2, '', '');

CREATE TABLE availableIPService (
  id INTEGER, mux_uuid TEXT, url TEXT, slot INTEGER, interface_id INTEGER, mux_name TEXT,
  service_id INTEGER, service_name TEXT, dvb_service_id INTEGER, catalogue_flag INTEGER,
  service_type INTEGER, text_list TEXT, integer_list TEXT);
INSERT INTO availableIPService VALUES
  (1, '6f1c2a9e-3b57-4d08-9a41-c2e8b7d05f13', 'udp://239.192.10.1:5000', 7, 1, 'House channels', 41, 'Welcome Channel', 11, 0, 1, 'eng,spa', '2001,2002'),
  (2, '6f1c2a9e-3b57-4d08-9a41-c2e8b7d05f13', 'udp://239.192.10.1:5000', 7, 1, 'House channels', 42, 'Lobby Loop', 12, 0, 1, '', ''),
  (3, '6f1c2a9e-3b57-4d08-9a41-c2e8b7d05f13', 'udp://239.192.10.1:5000', 7, 1, 'House channels', 43, 'Night_Loop', 13, 0, 1, NULL, NULL),
  (4, '6f1c2a9e-3b57-4d08-9a41-c2e8b7d05f13', 'udp://239.192.10.1:5000', 7, 1, 'House channels', 44, 'Radio Lobby', 14, 0, 2, 'eng', '2031'),
  (5, 'b84d7e20-91fa-4c6b-8e35-0d6f2c9a7741', 'udp://239.192.10.2:5000', 7, 1, 'Studio', 45, 'Studio Prélude', 21, 0, 1, 'fra', '2101,2102'),
  (6, 'b84d7e20-91fa-4c6b-8e35-0d6f2c9a7741', 'udp://239.192.10.2:5000', 7, 1, 'Studio', 46, 'Studio Prélude HD', 22, 0, 25, 'fra,eng', '2111,2112,2113'),
  (7, 'b84d7e20-91fa-4c6b-8e35-0d6f2c9a7741', 'udp://239.192.10.2:5000', 7, 1, 'Studio', 47, 'Conferência 1', 23, 0, 1, 'por', '2121'),
  (8, 'b84d7e20-91fa-4c6b-8e35-0d6f2c9a7741', 'udp://239.192.10.2:5000', 7, 1, 'Studio', 48, 'Conferência 2', 24, NULL, 1, 'por', '2131'),
  (9, '2d9057c3-e6a8-4b1f-a7d2-5c3f81e0946b', 'rtp://239.192.20.1:5004', 7, 2, NULL, 49, 'Campus Lecture 1', 31, 0, 25, 'eng', '2201,2202'),
  (10, '2d9057c3-e6a8-4b1f-a7d2-5c3f81e0946b', 'rtp://239.192.20.1:5004', 7, 2, NULL, 50, 'Campus Lecture 2', 32, 0, 25, 'eng', '2211,2212'),
  (11, '2d9057c3-e6a8-4b1f-a7d2-5c3f81e0946b', 'rtp://239.192.20.1:5004', 7, 2, NULL, 51, 'Harbour Camera', 33, 0, 1, '', NULL),
  (12, '2d9057c3-e6a8-4b1f-a7d2-5c3f81e0946b', 'rtp://239.192.20.1:5004', 7, 2, NULL, 17, 'Kapelle St. Brún', 34, 0, 1, 'deu', '2231');
)sql";

}  // namespace lineup::simulator
